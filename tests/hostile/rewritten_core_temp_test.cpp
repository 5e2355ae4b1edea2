#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <optional>
#include <string>

#include "standins/core_temp/published_core_temp.h"
#include "standins/wait_until.h"
#include "stats/core_temp_reading.h"
#include "tests/hostile/random_inputs.h"
#include "tests/stats/free_handles.h"
#include "tests/stats/private_memory.h"
#include "tests/support/child_process.h"

// Core Temp's shared memory has no lock, and another process writes it. The mapping's name is the same for
// every program of the session, so nothing runs beside these tests.

namespace {

using Standins::CoreTempFigures;
using Standins::CoreTempMapping;
using Standins::PublishedCoreTemp;
using Standins::waitUntil;

/// Set in the process that writes.
constexpr wchar_t kWriterVariable[] = L"KELVARO_REWRITES_CORE_TEMP";

/// Writes one record over the other as fast as it can, until the process is ended.
[[noreturn]] void writeOnAndOn(CoreTempMapping mapping) {
    PublishedCoreTemp published(mapping);
    std::array<CoreTempFigures, 2> figures;
    figures[0] = {4, 2, true, 3600.0F, 100.0F, 36.0F, 1.0F, {}};
    figures[0].temperatures.fill(40.0F);
    figures[1] = {0xFFFFFFFF, 0xFFFFFFFF, false, 1e30F, 1e30F, 1e30F, 2.0F, {}};
    figures[1].temperatures.fill(90.0F);
    const std::array<std::string, 2> names = {std::string(7, 'a'), std::string(100, 'b')};
    for (std::size_t turn = 0;; turn = 1 - turn) {
        published.setFigures(figures[turn]);
        published.setName(names[turn]);
    }
}

/// The same test in another process, where it writes.
class Writer {
public:
    Writer() {
        const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
        const std::string filter =
            std::string("--gtest_filter=") + test.test_suite_name() + '.' + test.name();
        SetEnvironmentVariableW(kWriterVariable, L"1");
        process_.emplace(ownProgram(), std::wstring(filter.begin(), filter.end()));
        SetEnvironmentVariableW(kWriterVariable, nullptr);
    }

private:
    std::optional<ChildProcess> process_;
};

bool isWriter() {
    wchar_t value[2];
    return GetEnvironmentVariableW(kWriterVariable, value, 2) != 0;
}

class RewrittenCoreTemp : public testing::TestWithParam<CoreTempMapping> {};
INSTANTIATE_TEST_SUITE_P(BothRecords,
                         RewrittenCoreTemp,
                         testing::Values(CoreTempMapping::Original, CoreTempMapping::Extended),
                         [](const testing::TestParamInfo<CoreTempMapping>& tested) {
                             return std::string(tested.param == CoreTempMapping::Original ? "Original"
                                                                                          : "Extended");
                         });

TEST_P(RewrittenCoreTemp, IsReadAsFiguresOfEitherRecord) {
    if (isWriter()) {
        writeOnAndOn(GetParam());
    }
    RandomInputs inputs("readings of a record that is being written", 300, 20'000);
    const Writer writer;
    // The mapping is there a moment before its first record.
    ASSERT_TRUE(waitUntil(
        [] {
            const std::optional<CoreTempReading> reading = readCoreTemp(nullptr);
            return reading && reading->vid != 0.0F;
        },
        std::chrono::seconds(10)));
    const std::uintptr_t handles = greatestOfNextHandles();
    const std::size_t memory = privateMemoryBytes();
    std::array<unsigned, 2> seen{};
    // On a busy machine the writer may not get its turn during all of them.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    const auto waitsForTheWriter = [&] {
        return (seen[0] == 0 || seen[1] == 0) && std::chrono::steady_clock::now() < end;
    };
    while (inputs.next() || waitsForTheWriter()) {
        const std::optional<CoreTempReading> reading = readCoreTemp(nullptr);
        ASSERT_TRUE(reading) << inputs.place();
        ASSERT_LE(reading->name.size(), 100U) << inputs.place();
        ASSERT_EQ(reading->name.find_first_not_of(L"ab"), std::wstring::npos) << inputs.place();
        ASSERT_TRUE(reading->vid == 1.0F || reading->vid == 2.0F || reading->vid == 0.0F) << reading->vid;
        ASSERT_TRUE(reading->temperature == 40 || reading->temperature == 90 || reading->temperature == 0)
            << reading->temperature;
        ASSERT_LE(reading->clockText.size(), 150U) << inputs.place();
        ++seen[reading->vid == 2.0F ? 1 : 0];
    }
    EXPECT_GT(seen[0], 0U);
    EXPECT_GT(seen[1], 0U);
    EXPECT_LE(greatestOfNextHandles(), handles + 64);
    EXPECT_LE(privateMemoryBytes(), memory + std::size_t{1024} * 1024);
}

}  // namespace
