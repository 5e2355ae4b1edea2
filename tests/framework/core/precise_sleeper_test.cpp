#include "framework/core/precise_sleeper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace {

using std::chrono::duration;
using std::chrono::steady_clock;

double sleptMs(const Panelix::PreciseSleeper& sleeper, std::int64_t ms) {
    const auto start = steady_clock::now();
    sleeper.sleepFor(ms);
    return duration<double, std::milli>(steady_clock::now() - start).count();
}

TEST(PreciseSleeper, NeverWakesEarlyAndHitsTheMillisecondWhenTheMachineLetsIt) {
    const Panelix::PreciseSleeper sleeper;
    double shortest = 1e9;
    for (int i = 0; i < 40; ++i) {
        const double slept = sleptMs(sleeper, 5);
        // Half a millisecond for the clocks' own grain.
        EXPECT_GE(slept, 4.5);
        shortest = std::min(shortest, slept);
    }
    // The best of many: a busy machine delays some of them, but not each.
    EXPECT_LT(shortest, 7.0);
}

TEST(PreciseSleeper, ReturnsAtOnceForNothingToWait) {
    const Panelix::PreciseSleeper sleeper;
    double shortest = 1e9;
    for (int i = 0; i < 20; ++i) {
        shortest = std::min({shortest, sleptMs(sleeper, 0), sleptMs(sleeper, -1000)});
    }
    EXPECT_LT(shortest, 1.0);
}

}  // namespace
