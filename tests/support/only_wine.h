#pragma once

#include <gtest/gtest.h>

/// True under Wine; false on Windows, and where the variable KELVARO_AS_ON_WINDOWS is set.
bool runsUnderWine();

/// First statement of a test, or of its fixture's constructor or SetUp(), that works on Windows under a
/// condition only. The reason is one line. Under Wine nothing is skipped: there the test shows what is wrong.
#define SKIP_ON_WINDOWS_UNLESS(condition, reason) \
    if (!runsUnderWine() && !(condition)) {       \
        GTEST_SKIP() << (reason);                 \
    }                                             \
    static_assert(true)

/// For tests that only Wine can pass.
#define SKIP_ON_WINDOWS(reason) SKIP_ON_WINDOWS_UNLESS(false, reason)

/// GDI+ is one of the libraries of which Windows has each process take the system's, whatever lies beside the
/// program.
inline constexpr char kGdiplusIsTheSystems[] = "Windows takes no GDI+ from beside a program";
