#include "stats/retry_pause.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

/// The times at which attempts are made when all fail and somebody asks every 300 ms.
std::vector<std::int64_t> attemptsUntil(RetryPause& pause, std::int64_t beginMs, std::int64_t endMs) {
    std::vector<std::int64_t> attempts;
    for (std::int64_t nowMs = beginMs; nowMs < endMs; nowMs += 300) {
        if (pause.takeTurn(nowMs)) {
            attempts.push_back(nowMs - beginMs);
        }
    }
    return attempts;
}

TEST(RetryPause, DoublesFromAttemptToAttemptUpToItsLimit) {
    RetryPause pause(3'000, 12'000);
    const std::vector<std::int64_t> expected{0, 3'000, 9'000, 21'000, 33'000, 45'000};
    EXPECT_EQ(attemptsUntil(pause, 600'000, 650'000), expected);
}

TEST(RetryPause, TheLimitNeedNotBeADoubling) {
    RetryPause pause(4'000, 10'000);
    std::vector<std::int64_t> made;
    for (std::int64_t nowMs = 0; nowMs <= 50'000; ++nowMs) {
        if (pause.takeTurn(nowMs)) {
            made.push_back(nowMs);
        }
    }
    const std::vector<std::int64_t> expected{0, 4'000, 12'000, 22'000, 32'000, 42'000};
    EXPECT_EQ(made, expected);
}

TEST(RetryPause, EndsToTheMillisecond) {
    RetryPause pause(3'000, 12'000);
    EXPECT_TRUE(pause.takeTurn(100));
    EXPECT_FALSE(pause.takeTurn(3'099));
    EXPECT_TRUE(pause.takeTurn(3'100));
}

TEST(RetryPause, IsShortAgainAfterASuccessButNotLeftOut) {
    RetryPause pause(3'000, 12'000);
    EXPECT_EQ(attemptsUntil(pause, 0, 10'000).size(), 3U);
    pause.reset();
    // The one that began at 9,000 lasts 12,000.
    EXPECT_FALSE(pause.takeTurn(20'999));
    EXPECT_TRUE(pause.takeTurn(21'000));
    EXPECT_FALSE(pause.takeTurn(23'999));
    EXPECT_TRUE(pause.takeTurn(24'000));
}

}  // namespace
