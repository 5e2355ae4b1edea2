#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "pages/figure_texts.h"
#include "stats/ansi_text.h"
#include "stats/core_temp_abi.h"
#include "stats/core_temp_figures.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

/// Digits of the greatest float, with sign and two decimals.
constexpr std::size_t kLongestFigure = 1 + 39 + 3;

/// Getters over a record, as CoreTempProxy has them without library.
class RecordSource {
public:
    explicit RecordSource(const CoreTemp::SharedRecord& record) : record_(record) {}

    std::uint32_t GetCPUCount() const { return record_.uiCPUCnt; }
    std::uint32_t GetCoreCount() const { return record_.uiCoreCnt; }
    float GetTemp(int index) const {
        require(index >= 0 && index < static_cast<int>(CoreTemp::kMaxCores),
                "the walk stays within the record");
        return record_.fTemp[index];
    }

private:
    const CoreTemp::SharedRecord& record_;
};

/// A library that says something else at each call.
class FickleSource {
public:
    explicit FickleSource(FuzzedDataProvider& input) : input_(input) {}

    std::uint32_t GetCPUCount() const { return input_.ConsumeIntegral<std::uint32_t>(); }
    std::uint32_t GetCoreCount() const { return input_.ConsumeIntegral<std::uint32_t>(); }
    float GetTemp(int index) const {
        require(index >= 0 && index < static_cast<int>(CoreTemp::kMaxCores),
                "the walk stays within the record");
        return input_.ConsumeFloatingPoint<float>();
    }

private:
    FuzzedDataProvider& input_;
};

/// The hottest of the cores that the counts cover, as far as the record goes.
double promisedHottest(const CoreTemp::SharedRecord& record) {
    const std::uint32_t cpus = std::min(record.uiCPUCnt, CoreTemp::kMaxCpus);
    const std::uint64_t covered = std::uint64_t{cpus} * record.uiCoreCnt;
    double hottest = 0.0;
    for (std::uint64_t index = 0; index < std::min<std::uint64_t>(covered, CoreTemp::kMaxCores); ++index) {
        const float temperature = record.fTemp[index];
        if (std::isfinite(temperature) && temperature > hottest) {
            hottest = temperature;
        }
    }
    return hottest;
}

void checkDegrees(double hottest) {
    const std::int32_t degrees = wholeDegrees(hottest);
    require(std::isfinite(hottest) && hottest >= 0.0, "the hottest core has a temperature");
    require(degrees >= 0 && degrees <= hottest, "degrees are truncated");
    require(degrees == std::numeric_limits<std::int32_t>::max() || hottest - degrees < 1.0,
            "degrees are off by less than one");
}

void checkTexts(const CoreTemp::SharedRecord& record) {
    const std::string_view name = textOfField(record.sCPUName);
    require(name.size() <= CoreTemp::kNameLength && name.find('\0') == std::string_view::npos,
            "a name ends at its terminator or with its field");
    require(name.size() == CoreTemp::kNameLength || record.sCPUName[name.size()] == '\0',
            "a name goes up to its terminator");
    const std::wstring clock = cpuClockText(record.fCPUSpeed, record.fFSBSpeed, record.fMultiplier);
    require(clock.size() <= 3 * kLongestFigure + std::wstring_view(L"MHz ( x )").size(),
            "a clock's text is bounded");
    const std::size_t unit = clock.find(L"MHz (");
    require(
        unit != std::wstring::npos && clock.find(L" x ", unit) != std::wstring::npos && clock.back() == L')',
        "a clock's text has its form");
    const std::wstring volts = vidText(record.fVID);
    require(volts.size() <= kLongestFigure + 5 && volts.back() == L'v', "a voltage's text is bounded");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CoreTemp::SharedRecord record{};
    std::memcpy(&record, data, std::min(size, CoreTemp::kSharedRecordBytes));
    const double hottest = hottestCore(RecordSource(record));
    require(hottest == promisedHottest(record), "the hottest core within the counts counts");
    checkDegrees(hottest);
    checkTexts(record);
    FuzzedDataProvider input(data, size);
    checkDegrees(hottestCore(FickleSource(input)));
    return 0;
}
