#include "framework/drawing/sys_exception.h"

#include <gtest/gtest.h>

#include <string>

TEST(SysException, CarriesMessageAndTitleToWhoeverCatchesIt) {
    const std::wstring message = L"what happened";
    const std::wstring title = L"where";
    try {
        throw Panelix::SysException(message, title);
    } catch (const Panelix::SysException& exception) {
        EXPECT_EQ(exception.message, L"what happened");
        EXPECT_EQ(exception.title, L"where");
    }
}

TEST(SysException, MayHaveAnEmptyMessage) {
    const Panelix::SysException exception(L"", L"title");
    EXPECT_TRUE(exception.message.empty());
    EXPECT_EQ(exception.title, L"title");
}
