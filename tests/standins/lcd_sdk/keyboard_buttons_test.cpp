#include "standins/lcd_sdk/keyboard_buttons.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using Standins::parsePressList;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(PressList, NamesBecomeMasksInTheirOrder) {
    EXPECT_THAT(parsePressList("menu,right,down,ok"), ElementsAre(0x4000u, 0x0200u, 0x2000u, 0x0400u));
    EXPECT_THAT(parsePressList("up,left,cancel"), ElementsAre(0x1000u, 0x0100u, 0x0800u));
    EXPECT_THAT(parsePressList("ok"), ElementsAre(0x0400u));
    EXPECT_THAT(parsePressList("Menu,MENU"), ElementsAre(0x4000u, 0x4000u));
}

TEST(PressList, WhatIsNoButtonIsRefusedWithItsName) {
    for (const std::string list : {"", "menu,", ",menu", "menu,,ok", "menu;ok", "back", "up, down"}) {
        EXPECT_THROW(parsePressList(list), std::invalid_argument) << list;
    }
    try {
        parsePressList("menu,back,ok");
        FAIL() << "accepted";
    } catch (const std::invalid_argument& error) {
        EXPECT_THAT(error.what(), HasSubstr("'back'"));
        EXPECT_THAT(error.what(), HasSubstr("cancel"));
    }
}

}  // namespace
