#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "app/report/gamepad_battery_text.h"
#include "app/report/sections.h"
#include "stats/system_info.h"

namespace {

/// What a sample shows, label and text.
using Figures = std::vector<std::pair<std::wstring, std::wstring>>;

std::wstring percent(std::int32_t number) {
    return std::to_wstring(number) + L" %";
}

std::wstring degrees(std::int32_t number, bool fahrenheit) {
    return std::to_wstring(number) + (fahrenheit ? L" \u00B0F" : L" \u00B0C");
}

template <typename Text>
std::wstring ifThere(bool there, const Text& text) {
    return there ? std::wstring(text()) : std::wstring(L"-");
}

Figures figuresOf(const Snapshot& sample) {
    const GpuStats& gpu = sample.gpuStats;
    const bool cpu = sample.coreTempAvailable;
    const auto muted = [](bool is) { return is ? L"yes" : L"no"; };
    return {
        {L"CPU load", percent(static_cast<std::int32_t>(sample.cpuLoad))},
        {L"CPU clock", ifThere(cpu, [&] { return sample.cpuClockText; })},
        {L"CPU voltage", ifThere(cpu, [&] { return std::to_wstring(sample.cpuVid) + L" V"; })},
        {L"CPU temperature",
         ifThere(cpu, [&] { return degrees(sample.cpuTemperature, sample.cpuTempFahrenheit); })},
        {L"GPU load", ifThere(gpu.loadValid, [&] { return percent(gpu.load); })},
        {L"GPU clock", ifThere(gpu.coreClockValid, [&] { return std::to_wstring(gpu.coreClock) + L" kHz"; })},
        {L"GPU temperature", ifThere(gpu.temperatureValid, [&] { return degrees(gpu.temperature, false); })},
        {L"Video memory", ifThere(gpu.memoryLoadValid, [&] { return percent(gpu.memoryLoad); })},
        {L"Memory", percent(sample.memoryLoad)},
        {L"Volume left", percent(sample.speakerLeftVolume)},
        {L"Volume right", percent(sample.speakerRightVolume)},
        {L"Volume master", percent(sample.speakerMasterVolume)},
        {L"Speaker muted", muted(sample.speakerMuted)},
        {L"Microphone muted", muted(sample.microphoneMuted)},
        {L"Gamepad battery", gamepadBatteryText(sample.gamepadBattery)},
    };
}

Figures sampleAfterPeriod(SystemInfo& sampler) {
    Sleep(static_cast<DWORD>(SystemInfo::kUpdatePeriodMs));
    sampler.update();
    return figuresOf(sampler);
}

/// Two texts as columns.
std::wstring columns(const std::wstring& first, const std::wstring& second) {
    constexpr std::size_t kColumn = 30;
    std::wstring text = first + L"  ";
    text.resize(std::max(text.size(), kColumn), L' ');
    return text + second;
}

}  // namespace

void reportFigures(ReportWriter& writer) {
    SystemInfo sampler;
    // The first measurement of the CPU load is only what the next one is compared with.
    sampleAfterPeriod(sampler);
    const Figures first = sampleAfterPeriod(sampler);
    const Figures second = sampleAfterPeriod(sampler);
    writer.value(L"GPU", sampler.gpuAvailable ? sampler.gpuName : L"none");
    writer.value(L"Time", sampler.dateTimeText());
    writer.value(L"Sample", columns(L"first", L"second"));
    for (std::size_t i = 0; i < first.size(); ++i) {
        writer.value(first[i].first, columns(first[i].second, second[i].second));
    }
}
