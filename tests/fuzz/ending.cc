#include "fuzz/ending.h"

bool fuzz::Endings_caught = false;

// The names are the linker's.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" [[noreturn]] void __real_exit(int status);
extern "C" [[noreturn]] void __wrap_exit(int status);

void __wrap_exit(int status)
{
    if (fuzz::Endings_caught) throw fuzz::Ended{status};
    __real_exit(status);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
