#include <gtest/gtest.h>

#include <chrono>

#include "framework/drawing/rate_updater.h"
#include "tests/support/virtual_time.h"

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kPeriod = 300ms;

/// An updater whose owner ticks it 15 times a second.
class RateUpdaterInVirtualTime : public testing::Test {
protected:
    class CountingUpdater : public Panelix::RateUpdater {
    public:
        CountingUpdater() : RateUpdater(kPeriod.count()) {}
        void update() override { ++updates; }
        int updates = 0;
    };

    /// Updates during the next `frames` frames of 66 ms.
    int updatesIn(int frames) {
        const int before = updater.updates;
        for (int i = 0; i < frames; ++i) {
            time.pass(66ms);
            updater.tick();
        }
        return updater.updates - before;
    }

    VirtualTime time;
    CountingUpdater updater;
};

TEST_F(RateUpdaterInVirtualTime, UpdatesOncePerPeriod) {
    updater.tick();
    // 100 frames are 6,600 ms.
    EXPECT_EQ(updatesIn(100), 22);
}

TEST_F(RateUpdaterInVirtualTime, ANightInStandbyIsNotCaughtUpWith) {
    updater.tick();
    for (int night = 0; night < 3; ++night) {
        updatesIn(100);
        time.standBy(8h);
        updater.tick();
        updater.tick();
        EXPECT_LE(updatesIn(100), 22);
    }
    // 600 frames are 39,600 ms, and the first tick updated at once.
    EXPECT_EQ(updater.updates, 1 + 132);
}

TEST_F(RateUpdaterInVirtualTime, AStallWhileTheMachineIsAwakeIsCaughtUpWithOneUpdatePerTick) {
    updater.tick();
    time.pass(10 * kPeriod);
    for (int i = 0; i < 10; ++i) {
        updater.tick();
        EXPECT_EQ(updater.updates, 1 + i + 1);
    }
    updater.tick();
    EXPECT_EQ(updater.updates, 11);
}

TEST_F(RateUpdaterInVirtualTime, StandbyDuringAStallCountsForNothing) {
    updater.tick();
    time.pass(2 * kPeriod);
    time.standBy(8h);
    time.pass(kPeriod);
    for (int i = 0; i < 20; ++i) {
        updater.tick();
    }
    EXPECT_EQ(updater.updates, 1 + 3);
}

}  // namespace
