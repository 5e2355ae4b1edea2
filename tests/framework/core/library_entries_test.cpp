#include "framework/core/library_entries.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

int answerOne() {
    return 1;
}

void doNothing(const char*) {}

struct Table {
    int (*first)() = nullptr;
    void (*second)(const char*) = nullptr;
};

constexpr std::tuple kEntries = {
    Panelix::LibraryEntry<const char*, Table, int()>{"first", &Table::first},
    Panelix::LibraryEntry<const char*, Table, void(const char*)>{"second", &Table::second},
};

bool fill(Table& table, const std::map<std::string, void*>& exports) {
    return Panelix::fillEntries(table, kEntries, [&exports](const char* name) {
        const auto found = exports.find(name);
        return found != exports.end() ? found->second : nullptr;
    });
}

TEST(LibraryEntries, EverySlotGetsItsEntry) {
    Table table;
    EXPECT_TRUE(fill(
        table,
        {{"first", reinterpret_cast<void*>(answerOne)}, {"second", reinterpret_cast<void*>(doNothing)}}));
    ASSERT_NE(table.first, nullptr);
    EXPECT_EQ(table.first(), 1);
    EXPECT_EQ(table.second, doNothing);
}

TEST(LibraryEntries, WhatIsThereIsFoundWhateverIsMissing) {
    Table table;
    EXPECT_FALSE(fill(table, {{"first", reinterpret_cast<void*>(answerOne)}}));
    EXPECT_EQ(table.first, answerOne);
    EXPECT_EQ(table.second, nullptr);

    Table other;
    EXPECT_FALSE(fill(other, {{"second", reinterpret_cast<void*>(doNothing)}}));
    EXPECT_EQ(other.first, nullptr);
    EXPECT_EQ(other.second, doNothing);
}

}  // namespace
