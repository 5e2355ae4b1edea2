#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstring>
#include <span>
#include <vector>

#include "framework/core/pass_pacing.h"
#include "stats/cpu_load_average.h"
#include "stats/gamepad_battery_code.h"
#include "stats/memory_percent.h"
#include "stats/volume_percent.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

bool isPercent(std::int32_t value) {
    return value >= 0 && value <= 100;
}

/// Any float, not numbers included.
float someFloat(FuzzedDataProvider& input) {
    const auto bits = input.ConsumeIntegral<std::uint32_t>();
    float number = 0.0F;
    std::memcpy(&number, &bits, sizeof(number));
    return number;
}

void checkVolumes(FuzzedDataProvider& input) {
    const float scalar = input.ConsumeBool() ? someFloat(input) : input.ConsumeProbability<float>();
    const std::int32_t truncated = truncatedPercent(scalar);
    const std::int32_t rounded = roundedPercent(scalar);
    require(isPercent(truncated) && isPercent(rounded), "a volume is a percentage");
    require(rounded - truncated == 0 || rounded - truncated == 1, "rounding adds one at most");
    const int percent = input.ConsumeIntegral<int>();
    const float made = volumeScalar(percent);
    require(made >= 0.0F && made <= 1.0F, "a volume is set from 0 to 1");
    require(!isPercent(percent) || roundedPercent(made) == percent, "a volume that was set is read back");
}

void checkMemory(FuzzedDataProvider& input) {
    const auto total = input.ConsumeIntegral<std::uint64_t>();
    const auto available = input.ConsumeBool() ? input.ConsumeIntegralInRange<std::uint64_t>(0, total)
                                               : input.ConsumeIntegral<std::uint64_t>();
    const std::int32_t percent = physicalMemoryPercent(total, available);
    require(isPercent(percent), "memory in use is a percentage");
    require(total == 0 || available > total ||
                std::abs(percent -
                         static_cast<double>(total - available) / static_cast<double>(total) * 100.0) < 1.001,
            "memory in use is off by less than one");
    const auto videoTotal = static_cast<std::uint32_t>(total);
    const auto videoAvailable = static_cast<std::uint32_t>(available);
    const std::int32_t videoPercent = videoMemoryPercent(videoTotal, videoAvailable);
    require(isPercent(videoPercent), "video memory in use is a percentage");
    require((videoPercent == 100) == (videoTotal != 0 && videoAvailable == 0),
            "only without anything free all of it is in use");
}

/// Times that go on by what a second has at most, as a system counts them.
CpuReading laterReading(const CpuReading& last, FuzzedDataProvider& input) {
    constexpr std::int64_t kSecond = 10'000'000;
    CpuReading next = last;
    const auto idle = input.ConsumeIntegralInRange<std::int64_t>(0, kSecond);
    next.wall += input.ConsumeIntegralInRange<std::int64_t>(0, kSecond);
    next.system.idle += idle;
    next.system.kernel += idle + input.ConsumeIntegralInRange<std::int64_t>(0, kSecond);
    next.system.user += input.ConsumeIntegralInRange<std::int64_t>(0, kSecond);
    next.processKernel += input.ConsumeIntegralInRange<std::int64_t>(-kSecond, kSecond);
    next.processUser += input.ConsumeIntegralInRange<std::int64_t>(-kSecond, kSecond);
    return next;
}

void checkCpuLoad(FuzzedDataProvider& input) {
    CpuLoadAverage load;
    CpuReading reading{.wall = 1};
    for (int i = 0; i < 12 && input.remaining_bytes() > 0; ++i) {
        reading = laterReading(reading, input);
        require(isPercent(load.add(reading)), "a load of times that only grow is a percentage");
    }
    std::vector<ProcessorPerformanceRecord> processors;
    std::int64_t most = 0;
    while (input.remaining_bytes() > 40) {
        const auto idle = input.ConsumeIntegralInRange<std::int64_t>(0, std::int64_t{1} << 50U);
        processors.push_back({.idle = idle, .kernel = idle, .user = 0, .unread = {}});
        most = std::max(most, idle);
    }
    const CpuTimes average = averageCpuTimes(processors);
    require(average.idle >= 0 && average.idle <= most && average.kernel == average.idle && average.user == 0,
            "an average lies among what it is of");
}

void checkPacing(FuzzedDataProvider& input) {
    constexpr std::int64_t kLatest = std::int64_t{1} << 50U;
    const auto start = input.ConsumeIntegralInRange<std::int64_t>(0, kLatest);
    const auto end = input.ConsumeIntegralInRange<std::int64_t>(start, kLatest);
    const auto period = input.ConsumeIntegral<std::uint16_t>();
    const bool reset = input.ConsumeBool();
    const bool slide = input.ConsumeBool();
    const std::int64_t wait = Panelix::passWaitMs({start, end, reset, slide, period});
    const std::int64_t whole = slide ? 16 : period;
    require(wait >= 0 && wait <= whole, "a pass waits for its period at most");
    require(wait == 0 || reset || end - start + wait == whole, "a pass and its wait make a period");
}

void checkBattery(FuzzedDataProvider& input) {
    const auto type = input.ConsumeIntegral<std::uint8_t>();
    const auto level = input.ConsumeIntegral<std::uint8_t>();
    const std::int32_t code = gamepadBatteryCode(type, level);
    require(code >= kGamepadBatteryNone && code <= kGamepadBatteryFull, "a battery has one of six codes");
    require((code == kGamepadBatteryWired) == (type == 1), "one kind only is wired");
    require(code < kGamepadBatteryEmpty || code - kGamepadBatteryEmpty == level, "a level shows in the code");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    checkVolumes(input);
    checkMemory(input);
    checkPacing(input);
    checkBattery(input);
    checkCpuLoad(input);
    return 0;
}
