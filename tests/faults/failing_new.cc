// A heap that runs out when it is told to, linked in place of the usual one. With VX_FAIL_NEW_FROM=n in the
// environment the n-th allocation fails, and so do all behind it; without it none fails.
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

/// Under the sanitizers: a run that ends for want of memory has no need to give back what it was just making.
/// Leaks of runs that go well are looked for everywhere else.
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
