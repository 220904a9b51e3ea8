// A heap that runs out when it is told to, linked in place of the usual one. Two entries of the environment:
//     VX_FAIL_NEW_FROM=n    the n-th allocation fails, and so do all behind it; without it none fails
//     VX_FAIL_NEW_SIZE=s    only allocations of exactly s bytes count, and only they fail
#include <cstdlib>
#include <new>

namespace {

unsigned long number_of(const char* name)
{
    const char* text = getenv(name);
    return text ? strtoul(text, nullptr, 10) : 0;
}

bool is_to_fail(std::size_t size)
{
    static const unsigned long from = number_of("VX_FAIL_NEW_FROM");
    static const unsigned long only = number_of("VX_FAIL_NEW_SIZE");
    static unsigned long count = 0;
    if (from == 0 || (only != 0 && size != only)) return false;
    return ++count >= from;
}

void* allocate(std::size_t size)
{
    return is_to_fail(size) ? nullptr : malloc(size ? size : 1);
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
