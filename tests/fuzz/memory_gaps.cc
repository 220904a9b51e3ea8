// Calls of the C library that MemorySanitizer does not know: what they fill counts as filled. Linked with
// --wrap.
#include <sanitizer/msan_interface.h>
#include <sys/stat.h>

// The names are the linker's.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

int __real_stat64(const char* path, struct stat* what);
int __real_fstat64(int fd, struct stat* what);
int __wrap_stat64(const char* path, struct stat* what);
int __wrap_fstat64(int fd, struct stat* what);

int __wrap_stat64(const char* path, struct stat* what)
{
    const int result = __real_stat64(path, what);
    if (result == 0) __msan_unpoison(what, sizeof *what);
    return result;
}

int __wrap_fstat64(int fd, struct stat* what)
{
    const int result = __real_fstat64(fd, what);
    if (result == 0) __msan_unpoison(what, sizeof *what);
    return result;
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
