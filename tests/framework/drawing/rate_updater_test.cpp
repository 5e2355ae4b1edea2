#include "framework/drawing/rate_updater.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr std::int64_t kPeriodMs = 300;

class CountingUpdater : public Panelix::RateUpdater {
public:
    explicit CountingUpdater(std::int64_t periodMs = kPeriodMs) : RateUpdater(periodMs) {}

    void update() override { ++updates; }

    /// Whether a tick at this time updates.
    bool updatesAt(std::int64_t nowMs) {
        const int before = updates;
        tickAt(nowMs);
        return updates == before + 1;
    }

    int updates = 0;
};

}  // namespace

TEST(RateUpdater, FirstTickUpdatesAtAnyTime) {
    for (const std::int64_t now : {std::int64_t{0},
                                   std::int64_t{1},
                                   std::int64_t{299},
                                   std::int64_t{1'700'000'000'000},
                                   std::numeric_limits<std::int64_t>::max()}) {
        CountingUpdater updater;
        EXPECT_TRUE(updater.updatesAt(now)) << now;
    }
}

TEST(RateUpdater, ScheduleAdvancesByWholePeriods) {
    struct Tick {
        std::int64_t afterFirstMs;
        bool updates;
    };
    const std::vector<Tick> ticks{
        {0, true},
        {100, false},
        {299, false},
        {300, true},
        {450, false},
        {599, false},
        {600, true},
        {899, false},
        {950, true},
        {1199, false},
        {1200, true},
    };
    CountingUpdater updater;
    constexpr std::int64_t kFirst = 5'000;
    for (const Tick& tick : ticks) {
        EXPECT_EQ(updater.updatesAt(kFirst + tick.afterFirstMs), tick.updates) << tick.afterFirstMs;
    }
}

TEST(RateUpdater, AfterAStallEachTickUpdatesOnceUntilItHasCaughtUp) {
    CountingUpdater updater;
    constexpr std::int64_t kStart = 7'000;
    ASSERT_TRUE(updater.updatesAt(kStart));
    EXPECT_TRUE(updater.updatesAt(kStart + 1'000));
    EXPECT_TRUE(updater.updatesAt(kStart + 1'000));
    EXPECT_TRUE(updater.updatesAt(kStart + 1'000));
    EXPECT_FALSE(updater.updatesAt(kStart + 1'000));
    EXPECT_FALSE(updater.updatesAt(kStart + 1'199));
    EXPECT_TRUE(updater.updatesAt(kStart + 1'200));
}

TEST(RateUpdater, ATimeBeforeTheLastUpdateUpdatesNothing) {
    CountingUpdater updater;
    ASSERT_TRUE(updater.updatesAt(10'000));
    EXPECT_FALSE(updater.updatesAt(9'000));
    EXPECT_FALSE(updater.updatesAt(0));
    EXPECT_FALSE(updater.updatesAt(10'299));
    EXPECT_TRUE(updater.updatesAt(10'300));
}

TEST(RateUpdater, TickFollowsARunningClock) {
    // Longer than a busy machine takes from one tick to the next, and than the clock's own ticks.
    CountingUpdater updater(400);
    updater.tick();
    EXPECT_EQ(updater.updates, 1);
    updater.tick();
    EXPECT_EQ(updater.updates, 1) << "a tick right after the first one";
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    updater.tick();
    EXPECT_EQ(updater.updates, 2);
}

TEST(RateUpdater, IsDeletedThroughItsBase) {
    struct Flagging : Panelix::RateUpdater {
        explicit Flagging(bool& flag) : RateUpdater(kPeriodMs), deleted(flag) {}
        ~Flagging() override { deleted = true; }
        void update() override {}
        bool& deleted;
    };
    bool deleted = false;
    std::unique_ptr<Panelix::RateUpdater> updater = std::make_unique<Flagging>(deleted);
    updater.reset();
    EXPECT_TRUE(deleted);
}
