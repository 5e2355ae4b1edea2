#include "standins/core_temp/published_core_temp.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace Standins {

namespace {

// Names, sizes and offsets once more and not from the program's header, so that a wrong one shows.

constexpr const wchar_t* nameOf(CoreTempMapping mapping, CoreTempSession session) {
    if (session == CoreTempSession::Zero) {
        return mapping == CoreTempMapping::Extended ? L"Global\\CoreTempMappingObjectEx"
                                                    : L"Global\\CoreTempMappingObject";
    }
    return mapping == CoreTempMapping::Extended ? L"CoreTempMappingObjectEx" : L"CoreTempMappingObject";
}

constexpr DWORD bytesOf(CoreTempMapping mapping) {
    return mapping == CoreTempMapping::Extended ? 4740 : 2688;
}

constexpr std::size_t kCoreCountOffset = 1536;
constexpr std::size_t kCpuCountOffset = 1540;
constexpr std::size_t kTemperaturesOffset = 1544;
constexpr std::size_t kVidOffset = 2568;
constexpr std::size_t kSpeedOffset = 2572;
constexpr std::size_t kBusSpeedOffset = 2576;
constexpr std::size_t kMultiplierOffset = 2580;
constexpr std::size_t kNameOffset = 2584;
constexpr std::size_t kFahrenheitOffset = 2684;
// Only in the extended record.
constexpr std::size_t kVersionOffset = 2688;
constexpr std::uint32_t kExtendedVersion = 2;

// A section of the paging file is as long as its pages, whatever length was asked for; this one is exact.
Panelix::UniqueFile openTemporaryFile() {
    wchar_t folder[MAX_PATH];
    wchar_t path[MAX_PATH];
    if (GetTempPathW(MAX_PATH, folder) == 0 || GetTempFileNameW(folder, L"ctm", 0, path) == 0) {
        return {};
    }
    return Panelix::UniqueFile(CreateFileW(path,
                                           GENERIC_READ | GENERIC_WRITE,
                                           0,
                                           nullptr,
                                           TRUNCATE_EXISTING,
                                           FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE,
                                           nullptr));
}

}  // namespace

PublishedCoreTemp::PublishedCoreTemp(CoreTempMapping mapping, CoreTempSession session)
    : PublishedCoreTemp(mapping, bytesOf(mapping), session) {}

PublishedCoreTemp::PublishedCoreTemp(CoreTempMapping mapping, std::uint32_t bytes, CoreTempSession session)
    : file_(openTemporaryFile()),
      section_(CreateFileMappingW(file_.get(), nullptr, PAGE_READWRITE, 0, bytes, nameOf(mapping, session))) {
    if (!file_ || !section_ || GetLastError() == ERROR_ALREADY_EXISTS) {
        throw std::runtime_error("Core Temp's shared memory cannot be made, or exists already");
    }
    view_.reset(MapViewOfFile(section_.get(), FILE_MAP_ALL_ACCESS, 0, 0, 0));
    if (!view_) {
        throw std::runtime_error("Core Temp's shared memory cannot be mapped");
    }
    if (mapping == CoreTempMapping::Extended && bytes > kVersionOffset) {
        setAt(kVersionOffset, &kExtendedVersion, sizeof(kExtendedVersion));
    }
}

void PublishedCoreTemp::setAt(std::size_t offset, const void* value, std::size_t size) noexcept {
    std::memcpy(static_cast<char*>(view_.get()) + offset, value, size);
}

void PublishedCoreTemp::setFigures(const CoreTempFigures& figures) noexcept {
    setAt(kCoreCountOffset, &figures.coreCount, sizeof(figures.coreCount));
    setAt(kCpuCountOffset, &figures.cpuCount, sizeof(figures.cpuCount));
    setAt(kTemperaturesOffset, figures.temperatures.data(), sizeof(figures.temperatures));
    setAt(kVidOffset, &figures.vidVolts, sizeof(float));
    setAt(kSpeedOffset, &figures.speedMHz, sizeof(float));
    setAt(kBusSpeedOffset, &figures.busSpeedMHz, sizeof(float));
    setAt(kMultiplierOffset, &figures.multiplier, sizeof(float));
    const std::uint8_t fahrenheit = figures.fahrenheit ? 1 : 0;
    setAt(kFahrenheitOffset, &fahrenheit, sizeof(fahrenheit));
}

void PublishedCoreTemp::setName(std::string_view name) noexcept {
    std::array<char, VirtualCoreTemp::kNameLength> field{};
    std::copy_n(name.begin(), std::min(name.size(), field.size()), field.begin());
    setAt(kNameOffset, field.data(), field.size());
}

}  // namespace Standins
