// Formatted text.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>

namespace check {

/// What printf would print, cut at 399 characters.
__attribute__((format(printf, 1, 2))) inline std::string printed(const char* format, ...)
{
    char text[400];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
    return text;
}

} // namespace check
