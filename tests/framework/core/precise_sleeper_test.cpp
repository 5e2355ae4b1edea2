#include "framework/core/precise_sleeper.h"

#include <gmock/gmock.h>

#include <timeapi.h>

#include <algorithm>
#include <chrono>
#include <optional>

#include "tests/support/import_recorder.h"

namespace {

using std::chrono::duration;
using std::chrono::steady_clock;
using testing::ElementsAre;

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

/// What a sleeper does to the system.
class PreciseSleeperCalls : public testing::Test {
protected:
    ImportRecorder<&CreateWaitableTimerExW> created{"KERNEL32.dll", "CreateWaitableTimerExW"};
    ImportRecorder<&SetWaitableTimer> set{"KERNEL32.dll", "SetWaitableTimer"};
    ImportRecorder<&WaitForSingleObject> waits{"KERNEL32.dll", "WaitForSingleObject"};
    ImportRecorder<&CloseHandle> closed{"KERNEL32.dll", "CloseHandle"};
    ImportRecorder<&Sleep> sleeps{"KERNEL32.dll", "Sleep"};
    ImportRecorder<&timeBeginPeriod> raised{"WINMM.dll", "timeBeginPeriod"};
    ImportRecorder<&timeEndPeriod> lowered{"WINMM.dll", "timeEndPeriod"};
};

TEST_F(PreciseSleeperCalls, OneTimerServesAllSleepsAndIsClosed) {
    {
        const Panelix::PreciseSleeper sleeper;
        sleeper.sleepFor(1);
        sleeper.sleepFor(2);
        EXPECT_EQ(closed.count(), 0U);
    }
    ASSERT_EQ(created.count(), 1U);
    const HANDLE timer = created.calls()[0].result;
    EXPECT_NE(timer, nullptr);
    EXPECT_THAT(set.arguments(), ElementsAre(timer, timer));
    EXPECT_THAT(waits.arguments(), ElementsAre(timer, timer));
    EXPECT_THAT(closed.arguments(), ElementsAre(timer));
    EXPECT_EQ(raised.count(), 0U);
    EXPECT_EQ(sleeps.count(), 0U);
}

TEST_F(PreciseSleeperCalls, AnyStepOfTheTimerThatFailsIsReplacedByASleepWithTheTickRaisedForItsLength) {
    enum class Failing { Creation, Setting, Wait };
    for (const Failing failing : {Failing::Creation, Failing::Setting, Failing::Wait}) {
        created.goThroughAgain();
        set.goThroughAgain();
        if (failing == Failing::Creation) {
            created.failWith(nullptr);
        } else if (failing == Failing::Setting) {
            set.failWith(FALSE);
        } else {
            waits.failWith(WAIT_FAILED);
        }
        const Panelix::PreciseSleeper sleeper;
        const std::size_t before = sleeps.count();
        EXPECT_GE(sleptMs(sleeper, 20), 19.5);
        ASSERT_EQ(sleeps.count(), before + 1) << static_cast<int>(failing);
        EXPECT_EQ(raised.count(), sleeps.count());
        EXPECT_EQ(lowered.count(), sleeps.count());
    }
    EXPECT_THAT(sleeps.arguments(), ElementsAre(20U, 20U, 20U));
    EXPECT_THAT(raised.arguments(), ElementsAre(1U, 1U, 1U));
    EXPECT_THAT(lowered.arguments(), ElementsAre(1U, 1U, 1U));
}

TEST_F(PreciseSleeperCalls, TheTickIsRaisedBeforeTheSleepAndLoweredAfterIt) {
    created.failWith(nullptr);
    const Panelix::PreciseSleeper sleeper;
    sleeps.onCall([this] {
        EXPECT_EQ(raised.count(), 1U);
        EXPECT_EQ(lowered.count(), 0U);
    });
    sleeper.sleepFor(1);
    EXPECT_EQ(sleeps.count(), 1U);
    EXPECT_EQ(lowered.count(), 1U);
}

TEST_F(PreciseSleeperCalls, ATickThatCannotBeRaisedIsNotLowered) {
    created.failWith(nullptr);
    raised.failWith(TIMERR_NOCANDO);
    const Panelix::PreciseSleeper sleeper;
    sleeper.sleepFor(1);
    EXPECT_EQ(sleeps.count(), 1U);
    EXPECT_EQ(raised.count(), 1U);
    EXPECT_EQ(lowered.count(), 0U);
}

}  // namespace
