#include "tests/bundle/test_programs.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace {

using Bundle::readTestPrograms;
using Bundle::TestProgram;
using testing::ElementsAre;
using testing::Pair;

TEST(TestPrograms, HaveWhatTheirPropertiesSay) {
    const auto programs = readTestPrograms(
        "tests/a/a_tests.exe|One.*:Two.*|TIMEOUT|120|ENVIRONMENT_MODIFICATION|TZ=set:America/St_Johns|"
        "RUN_SERIAL|TRUE|ENVIRONMENT|WINEDLLOVERRIDES=gdiplus=n\r\n"
        "\n"
        "tests/b.exe||TIMEOUT|120|RESOURCE_LOCK|sound|LABELS|soak|TIMEOUT|900\n");
    ASSERT_EQ(programs.size(), 2U);
    const TestProgram& first = programs[0];
    EXPECT_EQ(first.path, "tests/a/a_tests.exe");
    EXPECT_EQ(first.name(), "a_tests");
    EXPECT_EQ(first.together, "One.*:Two.*");
    EXPECT_EQ(first.limit, std::chrono::seconds(120));
    EXPECT_TRUE(first.alone);
    EXPECT_EQ(first.lock, "");
    EXPECT_THAT(first.environment,
                ElementsAre(Pair("TZ", "America/St_Johns"), Pair("WINEDLLOVERRIDES", "gdiplus=n")));
    const TestProgram& second = programs[1];
    EXPECT_EQ(second.name(), "b");
    EXPECT_EQ(second.together, "");
    EXPECT_EQ(second.limit, std::chrono::seconds(900)) << "the last one counts";
    EXPECT_FALSE(second.alone);
    EXPECT_EQ(second.lock, "sound");
}

TEST(TestPrograms, AreRefusedWithWhatCannotBeObeyed) {
    for (const char* line : {"a.exe",
                             "a.exe|",
                             "a.exe||TIMEOUT",
                             "a.exe||TIMEOUT|120|WORKING_DIRECTORY|x",
                             "a.exe||TIMEOUT|120|ENVIRONMENT|nothing",
                             "a.exe||TIMEOUT|120|ENVIRONMENT_MODIFICATION|PATH=path_list_append:x"}) {
        EXPECT_THROW(readTestPrograms(line), std::runtime_error) << line;
    }
}

}  // namespace
