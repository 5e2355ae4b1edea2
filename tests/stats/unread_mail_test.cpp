#include "stats/unread_mail.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/stats/free_handles.h"
#include "tests/support/denied_key.h"
#include "tests/support/registry_override.h"

namespace {

const std::wstring kMailKey = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UnreadMail";
constexpr wchar_t kCountValue[] = L"MessageCount";

/// The current user's list of accounts, empty at first.
class UnreadMail : public testing::Test {
protected:
    static void makeList() { RegistryOverride::makeKey(HKEY_CURRENT_USER, kMailKey); }

    static std::wstring accountKey(const std::wstring& name) { return kMailKey + L"\\" + name; }

    static void addAccount(const std::wstring& name, DWORD unread) {
        addAccount(name, REG_DWORD, &unread, sizeof(unread));
    }

    static void addAccount(const std::wstring& name, DWORD type, const void* data, DWORD bytes) {
        RegistryOverride::setValue(HKEY_CURRENT_USER, accountKey(name), kCountValue, type, data, bytes);
    }

    static void addAccountWithoutCount(const std::wstring& name) {
        RegistryOverride::makeKey(HKEY_CURRENT_USER, accountKey(name));
    }

private:
    RegistryOverride registry_;
};

TEST_F(UnreadMail, NoListIsMinusOne) {
    EXPECT_EQ(readUnreadMail(), -1);
}

TEST_F(UnreadMail, DeniedListIsMinusOne) {
    addAccount(L"account", 7);
    const DeniedKey denied(kMailKey);
    EXPECT_EQ(readUnreadMail(), -1);
}

TEST_F(UnreadMail, EmptyListIsZero) {
    makeList();
    EXPECT_EQ(readUnreadMail(), 0);
}

TEST_F(UnreadMail, OneAccountIsItsCount) {
    addAccount(L"someone@example.com", 7);
    EXPECT_EQ(readUnreadMail(), 7);
}

TEST_F(UnreadMail, CountsOfShorterAndShorterNamesAreAdded) {
    addAccount(L"aaaaaaaa", 1);
    addAccount(L"bbbb", 20);
    addAccount(L"c", 300);
    EXPECT_EQ(readUnreadMail(), 321);
}

TEST_F(UnreadMail, LongerNameEndsTheWalk) {
    addAccount(L"a", 3);
    addAccount(L"bbbbbbbbbb", 2);
    EXPECT_EQ(readUnreadMail(), 3);
}

TEST_F(UnreadMail, NameOfTheSameLengthEndsTheWalk) {
    // Its terminator does not fit any more.
    addAccount(L"aaaa", 3);
    addAccount(L"bbbb", 2);
    EXPECT_EQ(readUnreadMail(), 3);
}

TEST_F(UnreadMail, WalkThatEndedEarlyDoesNotSeeWhatFollows) {
    addAccount(L"aaaa", 3);
    addAccount(L"bbbb", 2);
    addAccountWithoutCount(L"c");
    EXPECT_EQ(readUnreadMail(), 3);
}

TEST_F(UnreadMail, TwoThousandAccountsOfOneLengthShowTheFirst) {
    for (int i = 0; i < 2000; ++i) {
        addAccount(L"account" + std::to_wstring(10'000 + i), 5);
    }
    EXPECT_EQ(readUnreadMail(), 5);
}

TEST_F(UnreadMail, TwoThousandAccountsCountAsFarAsTheirNamesGetShorter) {
    // In the registry's order: 253 names of 255 to 3 characters, then the others.
    constexpr std::size_t kLongest = 255;
    int added = 0;
    for (std::size_t length = kLongest; length >= 3; --length, ++added) {
        const std::size_t index = kLongest - length;
        std::wstring name = {static_cast<wchar_t>(L'a' + index / 16),
                             static_cast<wchar_t>(L'a' + index % 16)};
        name.append(length - name.size(), L'x');
        addAccount(name, 1);
    }
    for (; added < 2000; ++added) {
        addAccount(L"z" + std::to_wstring(10'000 + added), 1'000'000);
    }
    EXPECT_EQ(readUnreadMail(), 253);
}

TEST_F(UnreadMail, NamesOfEveryLengthAreRead) {
    for (std::size_t length = 1; length <= 255; ++length) {
        const std::wstring name(length, L'n');
        addAccount(name, static_cast<DWORD>(length));
        ASSERT_EQ(readUnreadMail(), static_cast<std::int32_t>(length));
        ASSERT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, accountKey(name).c_str()), ERROR_SUCCESS);
    }
}

TEST_F(UnreadMail, AccountWithoutCountMakesTheFigureUnavailable) {
    addAccount(L"aaaa", 3);
    addAccountWithoutCount(L"bbb");
    EXPECT_EQ(readUnreadMail(), -1);
}

TEST_F(UnreadMail, DeniedAccountAddsNothing) {
    addAccount(L"aaaa", 3);
    addAccount(L"bbb", 50);
    addAccount(L"cc", 4);
    const DeniedKey denied(accountKey(L"bbb"));
    EXPECT_EQ(readUnreadMail(), 7);
}

TEST_F(UnreadMail, ValuesOfOtherTypesCountByTheirBytes) {
    struct Case {
        const char* what;
        DWORD type;
        std::vector<BYTE> bytes;
        std::int32_t expected;
    };
    const Case cases[] = {
        {"four bytes", REG_BINARY, {1, 2, 0, 0}, 513},
        {"no type", REG_NONE, {9, 0, 0, 0}, 9},
        {"big-endian number, as it lies there", REG_DWORD_BIG_ENDIAN, {0, 0, 0, 1}, 0x0100'0000},
        {"short text", REG_SZ, {'7', 0, 0, 0}, '7'},
        {"two bytes", REG_BINARY, {1, 2}, 513},
        {"one byte", REG_DWORD, {8}, 8},
        {"empty value", REG_DWORD, {}, 0},
        {"eight bytes", REG_QWORD, {1, 0, 0, 0, 0, 0, 0, 0}, -1},
        {"five bytes", REG_BINARY, {1, 0, 0, 0, 0}, -1},
        {"longer text", REG_SZ, {'1', 0, '2', 0, 0, 0}, -1},
        {"several texts", REG_MULTI_SZ, {'1', 0, 0, 0, '2', 0, 0, 0, 0, 0}, -1},
    };
    for (const Case& c : cases) {
        addAccount(L"account", c.type, c.bytes.data(), static_cast<DWORD>(c.bytes.size()));
        EXPECT_EQ(readUnreadMail(), c.expected) << c.what;
    }
}

TEST_F(UnreadMail, LongValueAmongLargeOnesIsUnavailable) {
    const std::vector<BYTE> large(1 << 20, 1);
    addAccount(L"aaaa", 3);
    addAccount(L"bbb", REG_BINARY, large.data(), static_cast<DWORD>(large.size()));
    EXPECT_EQ(readUnreadMail(), -1);
}

TEST_F(UnreadMail, ShortValueLeavesNoRoomForTheNextOne) {
    const BYTE two[] = {1, 0};
    addAccount(L"aaaa", REG_BINARY, two, sizeof(two));
    addAccount(L"bbb", 3);
    EXPECT_EQ(readUnreadMail(), -1);
}

TEST_F(UnreadMail, SumStaysPositive) {
    addAccount(L"aaaa", 0xFFFF'FFFF);
    EXPECT_EQ(readUnreadMail(), 0x7FFF'FFFF);
    addAccount(L"bbb", 0xFFFF'FFFF);
    EXPECT_EQ(readUnreadMail(), 0x7FFF'FFFF);
}

TEST_F(UnreadMail, EveryKeyIsClosedWhenACountCannotBeRead) {
    addAccount(L"aaaa", 3);
    addAccountWithoutCount(L"bbb");
    ASSERT_EQ(readUnreadMail(), -1);
    const std::uintptr_t before = greatestOfNextHandles();
    for (int i = 0; i < 500; ++i) {
        readUnreadMail();
    }
    EXPECT_EQ(greatestOfNextHandles(), before);
}

TEST_F(UnreadMail, EveryKeyIsClosed) {
    for (int length = 20; length > 0; --length) {
        addAccount(std::wstring(1, static_cast<wchar_t>(L'z' - length)) +
                       std::wstring(static_cast<std::size_t>(length), L'x'),
                   1);
    }
    ASSERT_EQ(readUnreadMail(), 20);
    const std::uintptr_t before = greatestOfNextHandles();
    for (int i = 0; i < 500; ++i) {
        readUnreadMail();
    }
    EXPECT_EQ(greatestOfNextHandles(), before);
}

}  // namespace
