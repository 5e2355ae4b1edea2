#include "framework/core/unique_resource.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

std::vector<int> closedValues;

struct NumberTraits {
    using Type = int;
    static constexpr int empty() noexcept { return -1; }
    static void close(int value) noexcept {
        closedValues.push_back(value);
        SetLastError(ERROR_INVALID_FUNCTION);
    }
};

using UniqueNumber = Panelix::UniqueResource<NumberTraits>;
using Closed = std::vector<int>;

class UniqueResource : public testing::Test {
protected:
    UniqueResource() { closedValues.clear(); }
};

TEST_F(UniqueResource, ClosesWhatItHoldsOnceAndNothingWhenEmpty) {
    {
        const UniqueNumber empty;
        const UniqueNumber seven(7);
        EXPECT_FALSE(empty);
        EXPECT_TRUE(seven);
        EXPECT_EQ(seven.get(), 7);
    }
    EXPECT_EQ(closedValues, Closed{7});
}

TEST_F(UniqueResource, MoveAssignmentClosesTheOldValueAndEmptiesTheSource) {
    UniqueNumber target(1);
    UniqueNumber source(2);
    target = std::move(source);
    EXPECT_EQ(closedValues, Closed{1});
    EXPECT_EQ(target.get(), 2);
    EXPECT_FALSE(source);  // NOLINT(bugprone-use-after-move): being empty is what is tested
}

TEST_F(UniqueResource, MoveAssignmentToItselfKeepsTheValue) {
    UniqueNumber number(3);
    UniqueNumber& same = number;
    number = std::move(same);
    EXPECT_EQ(number.get(), 3);
    EXPECT_TRUE(closedValues.empty());
}

TEST_F(UniqueResource, ReleaseGivesTheValueUpWithoutClosingIt) {
    UniqueNumber number(4);
    EXPECT_EQ(number.release(), 4);
    EXPECT_FALSE(number);
    EXPECT_TRUE(closedValues.empty());
}

TEST_F(UniqueResource, PutClosesTheOldValueAndTakesTheNewOne) {
    UniqueNumber number(5);
    *number.put() = 6;
    EXPECT_EQ(closedValues, Closed{5});
    EXPECT_EQ(number.get(), 6);
}

TEST_F(UniqueResource, ClosingLeavesTheLastErrorAsItWas) {
    SetLastError(ERROR_ALREADY_EXISTS);
    UniqueNumber{8};
    EXPECT_EQ(closedValues, Closed{8});
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
}

TEST_F(UniqueResource, ARealHandleIsClosedForGood) {
    HANDLE raw = nullptr;
    {
        const Panelix::UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        raw = event.get();
        ASSERT_NE(raw, nullptr);
        EXPECT_NE(SetEvent(raw), FALSE);
    }
    EXPECT_EQ(SetEvent(raw), FALSE);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

TEST_F(UniqueResource, AFileIsEmptyAtItsOwnInvalidValue) {
    const Panelix::UniqueFile file;
    EXPECT_EQ(file.get(), INVALID_HANDLE_VALUE);
    EXPECT_FALSE(file);
}

}  // namespace
