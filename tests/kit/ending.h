// Captures what a function prints, and how it ends the process.
#pragma once

#include "driver/base/pieces.h"
#include "kit/scratch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace kit {

/// Everything that `what` prints on standard output.
template <class What>
std::string shown_by(What what)
{
    testing::internal::CaptureStdout();
    what();
    return testing::internal::GetCapturedStdout();
}

/// Everything that `what` prints on standard error.
template <class What>
std::string complained_by(What what)
{
    testing::internal::CaptureStderr();
    what();
    return testing::internal::GetCapturedStderr();
}

/// Fails unless `what` ends its process with this status and prints exactly these texts.
template <class What>
void expect_ending(What what, int status, const std::string& out, const std::string& err = "",
                   const char* file = __builtin_FILE(), int line = __builtin_LINE())
{
    const testing::ScopedTrace trace(file, line, "ending");
    const Scratch scratch;
    const std::string path = scratch.write("stdout", "");
    end_pieces(); // the writing thread must end before the fork
    EXPECT_EXIT(
        {
            if (!freopen(path.c_str(), "w", stdout)) abort();
            what();
        },
        testing::ExitedWithCode(status), testing::StrEq(err));
    EXPECT_EQ(scratch.read("stdout"), out);
}

} // namespace kit
