#include "tests/bundle/options.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using Bundle::Options;
using Bundle::readOptions;

TEST(Options, WithoutWordsAskAndRunEverything) {
    const Options options = readOptions({});
    EXPECT_FALSE(options.help);
    EXPECT_FALSE(options.yes);
    EXPECT_FALSE(options.restore);
    EXPECT_EQ(options.jobs, 0U);
    EXPECT_EQ(options.filter, "*");
    EXPECT_EQ(options.log, "run-tests.log");
}

TEST(Options, AreTakenInAnyOrder) {
    const Options options = readOptions({"/filter", "Gpu*", "/log", "here", "/jobs", "12", "/yes"});
    EXPECT_TRUE(options.yes);
    EXPECT_EQ(options.jobs, 12U);
    EXPECT_EQ(options.filter, "Gpu*");
    EXPECT_EQ(options.log, "here");
    EXPECT_TRUE(readOptions({"/restore"}).restore);
    EXPECT_TRUE(readOptions({"/?"}).help);
    EXPECT_TRUE(readOptions({"/help"}).help);
}

TEST(Options, ThatAreUnknownOrWithoutTheirArgumentAreRefused) {
    for (const char* word : {"yes", "/YES", "/jobs", "/filter", "/log", "--help", ""}) {
        EXPECT_THROW(readOptions({word}), std::runtime_error) << word;
    }
    for (const char* jobs : {"0", "65", "-1", "many", "2x", ""}) {
        EXPECT_THROW(readOptions({"/jobs", jobs}), std::runtime_error) << jobs;
    }
}

}  // namespace
