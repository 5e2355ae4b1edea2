#include "stats/gpu_nvidia.h"

#include <array>
#include <type_traits>

#include "stats/ansi_text.h"
#include "stats/memory_percent.h"
#include "stats/nvapi_status.h"

namespace {

// What the vendor's own loader answers for a function that the driver does not have.
template <typename... Parameters>
Nvapi::Status call(Nvapi::Status (*function)(Parameters...), std::type_identity_t<Parameters>... arguments) {
    return function != nullptr ? function(arguments...) : Nvapi::kNoImplementation;
}

}  // namespace

GpuNvidia::~GpuNvidia() {
    if (library_ != nullptr) {
        call(library_->entries().Unload);
    }
}

bool GpuNvidia::initialise() {
    Nvapi::Status status = Nvapi::kOk;
    library_ = NvapiLibrary::load(status);
    if (library_ != nullptr) {
        status = library_->entries().Initialize();
    }
    if (!check(status, L"Failed to initialize Nvidia API")) {
        return false;
    }
    std::array<Nvapi::GpuHandle, Nvapi::kMaxPhysicalGpus> handles{};
    std::uint32_t count = 0;
    status = call(library_->entries().EnumPhysicalGpus, handles.data(), &count);
    gpuHandle_ = handles.front();
    return check(status, L"Failed to get primary GPU");
}

bool GpuNvidia::check(Nvapi::Status status, const wchar_t* context) {
    if (status == Nvapi::kOk) {
        return true;
    }
    setLastError(context + std::wstring(L": ") + statusText(status));
    return false;
}

// Without library there is nobody to ask.
std::wstring GpuNvidia::statusText(Nvapi::Status status) const {
    char text[Nvapi::kShortStringLength] = {};
    if (library_ != nullptr && call(library_->entries().GetErrorMessage, status, text) == Nvapi::kOk) {
        return wideFromAnsi(textOfField(text));
    }
    return nvapiStatusName(status);
}

GpuStats GpuNvidia::sample() {
    GpuStats stats;
    if (library_ != nullptr) {
        readLoad(stats);
        readTemperature(stats);
        readMemoryLoad(stats);
        readCoreClock(stats);
    }
    return stats;
}

void GpuNvidia::readLoad(GpuStats& stats) const {
    Nvapi::DynamicPstates states{};
    states.version = Nvapi::DynamicPstates::kVersion;
    if (call(library_->entries().GpuGetDynamicPstatesInfoEx, gpuHandle_, &states) == Nvapi::kOk) {
        stats.load = static_cast<std::int32_t>(states.utilization[0].percentage);
        stats.loadValid = true;
    }
}

void GpuNvidia::readTemperature(GpuStats& stats) const {
    Nvapi::ThermalSettings settings{};
    settings.version = Nvapi::ThermalSettings::kVersion;
    if (call(library_->entries().GpuGetThermalSettings, gpuHandle_, 0, &settings) == Nvapi::kOk) {
        stats.temperature = settings.sensor[0].currentTemp;
        stats.temperatureValid = true;
    }
}

void GpuNvidia::readMemoryLoad(GpuStats& stats) const {
    Nvapi::MemoryInfo info{};
    info.version = Nvapi::MemoryInfo::kVersion;
    if (call(library_->entries().GpuGetMemoryInfo, gpuHandle_, &info) == Nvapi::kOk) {
        stats.memoryLoad =
            videoMemoryPercent(info.availableDedicatedVideoMemory, info.curAvailableDedicatedVideoMemory);
        stats.memoryLoadValid = true;
    }
}

void GpuNvidia::readCoreClock(GpuStats& stats) const {
    Nvapi::ClockFrequencies frequencies{};
    frequencies.version = Nvapi::ClockFrequencies::kVersion;
    frequencies.clockType = Nvapi::ClockFrequencies::kCurrentClocks;
    if (call(library_->entries().GpuGetAllClockFrequencies, gpuHandle_, &frequencies) == Nvapi::kOk) {
        stats.coreClock = frequencies.domain[0].frequency;
        stats.coreClockValid = true;
    }
}

std::wstring GpuNvidia::name() {
    char text[Nvapi::kShortStringLength] = {};
    if (library_ == nullptr || call(library_->entries().GpuGetFullName, gpuHandle_, text) != Nvapi::kOk) {
        return {};
    }
    return wideFromAnsi(textOfField(text));
}
