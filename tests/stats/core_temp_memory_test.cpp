#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "standins/core_temp/published_core_temp.h"
#include "standins/vendor_libraries.h"
#include "stats/core_temp_library.h"
#include "stats/core_temp_proxy.h"
#include "stats/core_temp_reading.h"
#include "tests/stats/core_temp_cases.h"
#include "tests/stats/free_handles.h"
#include "tests/stats/preloaded_library.h"
#include "tests/support/standin_session.h"
#include "tests/support/import_override.h"

// The mappings' names are Core Temp's own, the same for every program of the session: these tests run alone.

namespace {

using Standins::CoreTempMapping;
using Standins::CoreTempSession;
using Standins::PublishedCoreTemp;

constexpr const CoreTempLibrary* kNoLibrary = nullptr;

class CoreTempMemory : public testing::TestWithParam<CoreTempMapping> {};
INSTANTIATE_TEST_SUITE_P(BothRecords,
                         CoreTempMemory,
                         testing::Values(CoreTempMapping::Original, CoreTempMapping::Extended),
                         [](const testing::TestParamInfo<CoreTempMapping>& tested) {
                             return std::string(tested.param == CoreTempMapping::Original ? "Original"
                                                                                          : "Extended");
                         });

TEST_P(CoreTempMemory, EveryFigureIsRead) {
    PublishedCoreTemp published(GetParam());
    published.setName("Intel Core i7 Test @ 3.60GHz");
    published.setFigures(usualCoreTempFigures());
    const std::optional<CoreTempReading> reading = readCoreTemp(kNoLibrary);
    ASSERT_TRUE(reading.has_value());
    EXPECT_FALSE(reading->fahrenheit);
    EXPECT_EQ(reading->name, L"Intel Core i7 Test @ 3.60GHz");
    EXPECT_EQ(reading->clockText, L"3600.00MHz (100.00 x 36.00)");
    EXPECT_EQ(reading->vid, 1.125F);
    EXPECT_EQ(reading->temperature, 61);
}

TEST_P(CoreTempMemory, FiguresFollowCoreTemp) {
    PublishedCoreTemp published(GetParam());
    published.setFigures(usualCoreTempFigures());
    ASSERT_EQ(readCoreTemp(kNoLibrary)->temperature, 61);
    Standins::CoreTempFigures figures = usualCoreTempFigures();
    figures.fahrenheit = true;
    figures.temperatures[0] = 143.5F;
    published.setFigures(figures);
    EXPECT_EQ(readCoreTemp(kNoLibrary)->temperature, 143);
    EXPECT_TRUE(readCoreTemp(kNoLibrary)->fahrenheit);
}

TEST_P(CoreTempMemory, EndOfCoreTempGivesNothing) {
    {
        const PublishedCoreTemp published(GetParam());
        ASSERT_TRUE(readCoreTemp(kNoLibrary).has_value());
    }
    EXPECT_FALSE(readCoreTemp(kNoLibrary).has_value());
}

TEST_P(CoreTempMemory, NameWithoutTerminatorEndsWithItsField) {
    PublishedCoreTemp published(GetParam());
    Standins::CoreTempFigures figures = usualCoreTempFigures();
    figures.fahrenheit = true;  // The byte after the name is not zero then.
    published.setFigures(figures);
    published.setName(std::string(100, 'n'));
    EXPECT_EQ(readCoreTemp(kNoLibrary)->name, std::wstring(100, L'n'));
}

TEST_P(CoreTempMemory, EmptyRecordIsAProcessorWithoutFigures) {
    const PublishedCoreTemp published(GetParam());
    const std::optional<CoreTempReading> reading = readCoreTemp(kNoLibrary);
    ASSERT_TRUE(reading.has_value());
    EXPECT_EQ(reading->name, L"");
    EXPECT_EQ(reading->clockText, L"0.00MHz (0.00 x 0.00)");
    EXPECT_EQ(reading->temperature, 0);
}

TEST_P(CoreTempMemory, SectionMayEndWithTheLastMember) {
    PublishedCoreTemp published(GetParam(), 2686);
    Standins::CoreTempFigures figures = usualCoreTempFigures();
    figures.fahrenheit = true;
    published.setFigures(figures);
    published.setName("short");
    const std::optional<CoreTempReading> reading = readCoreTemp(kNoLibrary);
    ASSERT_TRUE(reading.has_value());
    EXPECT_TRUE(reading->fahrenheit);
    EXPECT_EQ(reading->name, L"short");
    EXPECT_EQ(reading->temperature, 61);
}

TEST_P(CoreTempMemory, SectionThatIsTooShortGivesNothing) {
    PublishedCoreTemp published(GetParam(), 2685);
    published.setFigures(usualCoreTempFigures());
    EXPECT_FALSE(readCoreTemp(kNoLibrary).has_value());
}

TEST_P(CoreTempMemory, TemperaturesAreBounded) {
    PublishedCoreTemp published(GetParam());
    for (const CoreTempCase& c : coreTempCases()) {
        published.setFigures(figuresOf(c));
        EXPECT_EQ(readCoreTemp(kNoLibrary)->temperature, c.expected) << c.name;
    }
}

TEST_P(CoreTempMemory, IsFoundWhenCoreTempWasStartedInSessionZero) {
    PublishedCoreTemp published(GetParam(), CoreTempSession::Zero);
    published.setFigures(usualCoreTempFigures());
    const std::optional<CoreTempReading> reading = readCoreTemp(kNoLibrary);
    ASSERT_TRUE(reading.has_value());
    EXPECT_EQ(reading->temperature, 61);
}

TEST(CoreTempMemories, ThoseOfTheUsersSessionComeBeforeThoseOfSessionZero) {
    PublishedCoreTemp zeroOriginal(CoreTempMapping::Original, CoreTempSession::Zero);
    zeroOriginal.setName("session 0, original");
    EXPECT_EQ(readCoreTemp(kNoLibrary)->name, L"session 0, original");
    PublishedCoreTemp zeroExtended(CoreTempMapping::Extended, CoreTempSession::Zero);
    zeroExtended.setName("session 0, extended");
    EXPECT_EQ(readCoreTemp(kNoLibrary)->name, L"session 0, extended");
    PublishedCoreTemp original(CoreTempMapping::Original);
    original.setName("original");
    EXPECT_EQ(readCoreTemp(kNoLibrary)->name, L"original");
}

TEST(CoreTempMemories, ExtendedRecordComesFirst) {
    PublishedCoreTemp original(CoreTempMapping::Original);
    PublishedCoreTemp extended(CoreTempMapping::Extended);
    original.setName("original");
    extended.setName("extended");
    EXPECT_EQ(readCoreTemp(kNoLibrary)->name, L"extended");
}

TEST(CoreTempMemories, OriginalRecordStandsInForAnExtendedOneThatCannotBeRead) {
    // An event under the mapping's name: it opens as no mapping.
    const Panelix::UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, L"CoreTempMappingObjectEx"));
    ASSERT_TRUE(event);
    PublishedCoreTemp original(CoreTempMapping::Original);
    original.setName("original");
    EXPECT_EQ(readCoreTemp(kNoLibrary)->name, L"original");
}

TEST(CoreTempMemories, OriginalRecordStandsInForAnExtendedOneThatIsTooShort) {
    PublishedCoreTemp extended(CoreTempMapping::Extended, 2685);
    PublishedCoreTemp original(CoreTempMapping::Original);
    extended.setName("extended");
    original.setName("original");
    const std::optional<CoreTempReading> reading = readCoreTemp(kNoLibrary);
    ASSERT_TRUE(reading.has_value());
    EXPECT_EQ(reading->name, L"original");
}

TEST(CoreTempMemories, NothingPublishedGivesNothing) {
    EXPECT_FALSE(readCoreTemp(kNoLibrary).has_value());
    CoreTempProxy proxy(kNoLibrary);
    EXPECT_FALSE(proxy.GetData());
    // Defined all the same.
    EXPECT_EQ(proxy.GetCPUName(), "");
    EXPECT_EQ(proxy.GetCPUCount(), 0u);
}

TEST(CoreTempMemories, LibraryComesBeforeTheMemory) {
    const StandinSession session;
    Standins::VirtualCoreTemp coreTemp;
    coreTemp.setRunning(true);
    coreTemp.setName("library");
    PublishedCoreTemp published(CoreTempMapping::Extended);
    published.setName("memory");
    const PreloadedLibrary file(Standins::vendorLibraryPath(Standins::VendorLibrary::CoreTemp));
    const std::unique_ptr<const CoreTempLibrary> library = CoreTempLibrary::load();
    EXPECT_EQ(readCoreTemp(library.get())->name, L"library");
}

TEST(CoreTempMemories, MappingIsClosedAfterEveryReading) {
    const PublishedCoreTemp published(CoreTempMapping::Extended);
    readCoreTemp(kNoLibrary);
    const std::uintptr_t before = greatestOfNextHandles();
    for (int i = 0; i < 2000; ++i) {
        readCoreTemp(kNoLibrary);
    }
    EXPECT_EQ(greatestOfNextHandles(), before);
}

int viewsMapped = 0;
int viewsUnmapped = 0;

void* WINAPI countMapping(HANDLE mapping, DWORD access, DWORD offsetHigh, DWORD offsetLow, SIZE_T bytes) {
    void* const view = MapViewOfFileEx(mapping, access, offsetHigh, offsetLow, bytes, nullptr);
    viewsMapped += view != nullptr ? 1 : 0;
    return view;
}

BOOL WINAPI countUnmapping(const void* view) {
    ++viewsUnmapped;
    return UnmapViewOfFileEx(const_cast<void*>(view), 0);
}

TEST(CoreTempMemories, ViewIsUnmappedAfterEveryReading) {
    const PublishedCoreTemp published(CoreTempMapping::Extended);
    const ImportOverride mapping("kernel32.dll", "MapViewOfFile", countMapping);
    const ImportOverride unmapping("kernel32.dll", "UnmapViewOfFile", countUnmapping);
    for (int reading = 1; reading <= 3; ++reading) {
        readCoreTemp(kNoLibrary);
        EXPECT_EQ(viewsMapped, reading);
        EXPECT_EQ(viewsUnmapped, reading);
    }
}

}  // namespace
