#include "stats/core_temp_library.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "standins/core_temp/virtual_core_temp.h"
#include "standins/vendor_libraries.h"
#include "stats/core_temp_proxy.h"
#include "stats/core_temp_reading.h"
#include "tests/stats/core_temp_cases.h"
#include "tests/stats/preloaded_library.h"
#include "tests/support/standin_session.h"

namespace {

using Standins::CoreTempCall;
using Standins::LoggedCall;
using Standins::VendorLibrary;
using Standins::VirtualCoreTemp;

/// Core Temp runs; which of its libraries the program finds, each test says.
class CoreTempSession {
protected:
    CoreTempSession() {
        coreTemp_.setRunning(true);
        coreTemp_.setName("Intel Core i7 Test @ 3.60GHz");
        coreTemp_.setFigures(usualCoreTempFigures());
    }

    std::vector<LoggedCall> callsOf(CoreTempCall call) {
        std::vector<LoggedCall> calls;
        for (const LoggedCall& logged : coreTemp_.log().entries()) {
            if (logged.call == static_cast<std::uint32_t>(call)) {
                calls.push_back(logged);
            }
        }
        return calls;
    }

private:
    StandinSession session_;

protected:
    VirtualCoreTemp coreTemp_;
};

class CoreTempLibraryLoaded : public CoreTempSession, public testing::Test {
    PreloadedLibrary file_{Standins::vendorLibraryPath(VendorLibrary::CoreTemp)};

protected:
    std::optional<CoreTempReading> read() { return readCoreTemp(library_.get()); }

    void SetUp() override { ASSERT_NE(library_, nullptr); }

    std::unique_ptr<const CoreTempLibrary> library_ = CoreTempLibrary::load();
};

void expectUsualFigures(const std::optional<CoreTempReading>& reading) {
    ASSERT_TRUE(reading.has_value());
    EXPECT_FALSE(reading->fahrenheit);
    EXPECT_EQ(reading->name, L"Intel Core i7 Test @ 3.60GHz");
    EXPECT_EQ(reading->clockText, L"3600.00MHz (100.00 x 36.00)");
    EXPECT_EQ(reading->vid, 1.125F);
    EXPECT_EQ(reading->temperature, 61);
}

TEST_F(CoreTempLibraryLoaded, EveryFigureIsRead) {
    expectUsualFigures(read());
}

TEST_F(CoreTempLibraryLoaded, FiguresFollowCoreTemp) {
    expectUsualFigures(read());
    Standins::CoreTempFigures figures = usualCoreTempFigures();
    figures.fahrenheit = true;
    figures.vidVolts = 0.75F;
    figures.temperatures[0] = 150.0F;
    coreTemp_.setFigures(figures);
    coreTemp_.setName("Another");
    const std::optional<CoreTempReading> reading = read();
    ASSERT_TRUE(reading.has_value());
    EXPECT_TRUE(reading->fahrenheit);
    EXPECT_EQ(reading->name, L"Another");
    EXPECT_EQ(reading->vid, 0.75F);
    EXPECT_EQ(reading->temperature, 150);
}

TEST_F(CoreTempLibraryLoaded, CoreTempThatIsNotRunningGivesNothing) {
    coreTemp_.setRunning(false);
    EXPECT_FALSE(read().has_value());
    EXPECT_EQ(coreTemp_.callCount(CoreTempCall::GetCPUName), 0u);
    // The object goes in this case, too.
    EXPECT_EQ(coreTemp_.callCount(CoreTempCall::Destructor), 1u);
}

TEST_F(CoreTempLibraryLoaded, TwoCpusOfFourCoresAreReadAtIndexes0To3And4To7) {
    read();
    std::vector<std::int64_t> indexes;
    for (const LoggedCall& call : callsOf(CoreTempCall::GetTemp)) {
        indexes.push_back(call.arguments[1]);
    }
    EXPECT_THAT(indexes, testing::ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
}

TEST_F(CoreTempLibraryLoaded, ObjectIsMadeAndDestroyedInEveryReading) {
    constexpr std::size_t kReadings = 3;
    for (std::size_t i = 0; i < kReadings; ++i) {
        read();
    }
    const std::vector<LoggedCall> made = callsOf(CoreTempCall::Constructor);
    const std::vector<LoggedCall> destroyed = callsOf(CoreTempCall::Destructor);
    ASSERT_EQ(made.size(), kReadings);
    ASSERT_EQ(destroyed.size(), kReadings);
    for (std::size_t i = 0; i < kReadings; ++i) {
        EXPECT_EQ(made[i].arguments[0], destroyed[i].arguments[0]);
        EXPECT_EQ(made[i].arguments[0] % 16, 0);
    }
    // And every call in between is about that object.
    const std::vector<LoggedCall> calls = coreTemp_.log().entries();
    EXPECT_TRUE(std::all_of(calls.begin(), calls.end(), [&](const LoggedCall& call) {
        return call.arguments[0] == made.front().arguments[0];
    }));
    EXPECT_EQ(calls.front().call, static_cast<std::uint32_t>(CoreTempCall::Constructor));
    EXPECT_EQ(calls.back().call, static_cast<std::uint32_t>(CoreTempCall::Destructor));
}

TEST_F(CoreTempLibraryLoaded, NameWithoutTerminatorEndsWithItsField) {
    coreTemp_.setName(std::string(100, 'n'));
    EXPECT_EQ(read()->name, std::wstring(100, L'n'));
}

TEST_F(CoreTempLibraryLoaded, EmptyNameIsEmpty) {
    coreTemp_.setName("");
    EXPECT_EQ(read()->name, L"");
}

TEST_F(CoreTempLibraryLoaded, MissingNameIsEmpty) {
    coreTemp_.setNameIsNull(true);
    const std::optional<CoreTempReading> reading = read();
    ASSERT_TRUE(reading.has_value());
    EXPECT_EQ(reading->name, L"");
    EXPECT_EQ(reading->temperature, 61);
}

TEST_F(CoreTempLibraryLoaded, SpeedOfZeroIsShown) {
    Standins::CoreTempFigures figures = usualCoreTempFigures();
    figures.speedMHz = 0.0F;
    coreTemp_.setFigures(figures);
    EXPECT_EQ(read()->clockText, L"0.00MHz (100.00 x 36.00)");
}

TEST_F(CoreTempLibraryLoaded, IndexBeyondTheRecordIsNotAskedFor) {
    const CoreTempProxy proxy(library_.get());
    EXPECT_EQ(proxy.GetTemp(256), 0.0F);
    EXPECT_EQ(proxy.GetTemp(-1), 0.0F);
    EXPECT_EQ(proxy.GetTemp(6), 61.75F);
    EXPECT_EQ(coreTemp_.callCount(CoreTempCall::GetTemp), 1u);
}

class CoreTempLibraryCases : public CoreTempSession, public testing::TestWithParam<CoreTempCase> {};
INSTANTIATE_TEST_SUITE_P(Claims,
                         CoreTempLibraryCases,
                         testing::ValuesIn(coreTempCases()),
                         [](const testing::TestParamInfo<CoreTempCase>& tested) {
                             return std::string(tested.param.name);
                         });

TEST_P(CoreTempLibraryCases, TemperatureIsBounded) {
    const PreloadedLibrary file(Standins::vendorLibraryPath(VendorLibrary::CoreTemp));
    const std::unique_ptr<const CoreTempLibrary> library = CoreTempLibrary::load();
    ASSERT_NE(library, nullptr);
    coreTemp_.setFigures(figuresOf(GetParam()));
    EXPECT_EQ(readCoreTemp(library.get())->temperature, GetParam().expected);
    for (const LoggedCall& call : callsOf(CoreTempCall::GetTemp)) {
        EXPECT_GE(call.arguments[1], 0);
        EXPECT_LT(call.arguments[1], 256);
    }
}

class CoreTempDeclarations : public CoreTempSession, public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(
    Declared,
    CoreTempDeclarations,
    testing::Values("plain", "virtual_const", "virtual", "unsigned_long", "plain_int", "virtual_int"),
    [](const testing::TestParamInfo<const char*>& tested) { return std::string(tested.param); });

TEST_P(CoreTempDeclarations, ClassIsFoundHoweverItIsDeclared) {
    const PreloadedLibrary file(Standins::vendorLibraryPath(VendorLibrary::CoreTemp, GetParam()));
    const std::unique_ptr<const CoreTempLibrary> library = CoreTempLibrary::load();
    ASSERT_NE(library, nullptr);
    expectUsualFigures(readCoreTemp(library.get()));
}

class CoreTempFaults : public CoreTempSession, public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(EachMember,
                         CoreTempFaults,
                         testing::Values("Constructor",
                                         "Destructor",
                                         "GetData",
                                         "IsFahrenheit",
                                         "GetCPUName",
                                         "GetCPUSpeed",
                                         "GetFSBSpeed",
                                         "GetMultiplier",
                                         "GetVID",
                                         "GetCPUCount",
                                         "GetCoreCount",
                                         "GetTemp"),
                         [](const testing::TestParamInfo<const char*>& tested) {
                             return std::string(tested.param);
                         });

TEST_P(CoreTempFaults, LibraryWithoutAMemberIsNotUsed) {
    const PreloadedLibrary file(
        Standins::vendorLibraryPath(VendorLibrary::CoreTemp, std::string("without_") + GetParam()));
    EXPECT_EQ(CoreTempLibrary::load(), nullptr);
    EXPECT_TRUE(coreTemp_.log().entries().empty());
}

}  // namespace
