// Replaces operator new. With VX_FAIL_NEW_FROM=n in the environment the n-th allocation and all later ones
// fail; without it none fails.
#include <cstdlib>
#include <new>

namespace {

bool is_to_fail()
{
    static const char* const from = getenv("VX_FAIL_NEW_FROM");
    static const unsigned long first = from ? strtoul(from, nullptr, 10) : 0;
    static unsigned long count = 0;
    return first != 0 && ++count >= first;
}

void* allocate(std::size_t size)
{
    return is_to_fail() ? nullptr : malloc(size ? size : 1);
}

} // namespace

/// Under the sanitizers: a run that ends because memory is exhausted need not free what it was making. All
/// other runs are checked for leaks.
extern "C" const char* __lsan_default_options();
extern "C" const char* __lsan_default_options()
{
    return "detect_leaks=0";
}

void* operator new(std::size_t size)
{
    if (void* memory = allocate(size)) return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return allocate(size);
}

void operator delete(void* memory) noexcept
{
    free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    free(memory);
}
