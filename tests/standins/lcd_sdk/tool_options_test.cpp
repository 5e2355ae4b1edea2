#include "standins/lcd_sdk/tool_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Standins::parseToolOptions;
using Standins::ToolAction;
using Standins::ToolOptions;
using testing::ElementsAre;

TEST(ToolOptions, ShotTakesItsFileAndKeepsTheUsualTimes) {
    const ToolOptions options = parseToolOptions({L"--shot", L"C:\\pictures\\lcd.png"});
    EXPECT_EQ(options.action, ToolAction::Shot);
    EXPECT_EQ(options.shotFile, L"C:\\pictures\\lcd.png");
    EXPECT_EQ(options.runTime.count(), 1);
    EXPECT_EQ(options.startLimit.count(), 30);
    EXPECT_TRUE(options.presses.empty());
}

TEST(ToolOptions, ShotOptionsMayStandInAnyOrder) {
    const ToolOptions options = parseToolOptions(
        {L"--press", L"menu,ok", L"--seconds", L"0", L"--shot", L"x.png", L"--wait", L"3600"});
    EXPECT_EQ(options.runTime.count(), 0);
    EXPECT_EQ(options.startLimit.count(), 3600);
    EXPECT_THAT(options.presses, ElementsAre(0x4000u, 0x0400u));
}

TEST(ToolOptions, RegistrationMayBeForced) {
    EXPECT_EQ(parseToolOptions({L"--register"}).action, ToolAction::Register);
    EXPECT_FALSE(parseToolOptions({L"--register"}).force);
    const ToolOptions options = parseToolOptions({L"--force", L"--unregister"});
    EXPECT_EQ(options.action, ToolAction::Unregister);
    EXPECT_TRUE(options.force);
}

TEST(ToolOptions, HelpWinsOverEverythingBeforeIt) {
    EXPECT_EQ(parseToolOptions({L"--help"}).action, ToolAction::Help);
    EXPECT_EQ(parseToolOptions({L"--register", L"--help"}).action, ToolAction::Help);
}

TEST(ToolOptions, WhatMakesNoSenseIsRefused) {
    const std::vector<std::vector<std::wstring>> commandLines = {
        {},
        {L"--shot"},
        {L"--nonsense"},
        {L"lcd.png"},
        {L"--seconds", L"3"},
        {L"--register", L"--unregister"},
        {L"--register", L"--press", L"ok"},
        {L"--shot", L"x.png", L"--force"},
        {L"--shot", L"x.png", L"--press", L"back"},
        {L"--shot", L"x.png", L"--press"},
        {L"--shot", L"x.png", L"--seconds", L""},
        {L"--shot", L"x.png", L"--seconds", L"-1"},
        {L"--shot", L"x.png", L"--seconds", L"1.5"},
        {L"--shot", L"x.png", L"--seconds", L"3601"},
        {L"--shot", L"x.png", L"--seconds", L"99999999999999999999"},
        {L"--shot", L"x.png", L"--seconds", L"\u0663"},
    };
    for (const std::vector<std::wstring>& arguments : commandLines) {
        EXPECT_THROW(parseToolOptions(arguments), std::invalid_argument)
            << (arguments.empty() ? std::wstring(L"nothing") : arguments.back()).c_str();
    }
}

}  // namespace
