#include "standins/simulator/simulation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using Standins::figuresAt;
using Standins::SimulatedFigures;

constexpr double kStepSeconds = 0.1;
constexpr double kLengthSeconds = 600.0;

TEST(Simulation, StaysWithinWhatSuchAMachineCanShow) {
    for (double t = 0; t < kLengthSeconds; t += kStepSeconds) {
        const SimulatedFigures figures = figuresAt(t);
        EXPECT_LE(figures.gpuLoadPercent, 100U);
        EXPECT_GE(figures.gpuTemperature, 30);
        EXPECT_LE(figures.gpuTemperature, 90);
        EXPECT_GT(figures.hottestCore, 30.0F);
        EXPECT_LT(figures.hottestCore, 90.0F);
        EXPECT_GT(figures.cpuVidVolts, 0.7F);
        EXPECT_LT(figures.cpuVidVolts, 1.4F);
        EXPECT_LE(figures.gpuFreeMemoryKB, Standins::kGpuMemoryKB);
        EXPECT_LE(figures.unreadMails, 5U);
    }
}

TEST(Simulation, TemperaturesFollowTheLoadSlowly) {
    float largestStep = 0.0F;
    for (double t = 0; t < kLengthSeconds; t += kStepSeconds) {
        const float change = figuresAt(t + kStepSeconds).hottestCore - figuresAt(t).hottestCore;
        // A minute's start begins the next warming from rest.
        if (std::fmod(t + kStepSeconds, 60.0) > kStepSeconds) {
            largestStep = std::max(largestStep, std::fabs(change));
        }
    }
    EXPECT_LT(largestStep, 1.5F);
    EXPECT_GT(figuresAt(29.0).hottestCore, figuresAt(1.0).hottestCore + 20.0F);
}

TEST(Simulation, ShowsEveryStateOfTheGamepad) {
    const SimulatedFigures wired = figuresAt(5);
    EXPECT_TRUE(wired.gamepadConnected);
    EXPECT_EQ(wired.gamepadBatteryType, 1);
    for (int i = 0; i < 4; ++i) {
        const SimulatedFigures figures = figuresAt(15 + 10 * i);
        EXPECT_TRUE(figures.gamepadConnected);
        EXPECT_EQ(figures.gamepadBatteryType, 3);
        EXPECT_EQ(figures.gamepadBatteryLevel, 3 - i);
    }
    EXPECT_FALSE(figuresAt(55).gamepadConnected);
    EXPECT_TRUE(figuresAt(65).gamepadConnected);
}

TEST(Simulation, MailsComeAndAreRead) {
    EXPECT_EQ(figuresAt(0).unreadMails, 0U);
    EXPECT_EQ(figuresAt(21).unreadMails, 1U);
    EXPECT_EQ(figuresAt(119).unreadMails, 5U);
    EXPECT_EQ(figuresAt(121).unreadMails, 0U);
}

}  // namespace
