#include "stats/gpu_nvidia.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <type_traits>

#include "framework/core/awake_time.h"
#include "stats/ansi_text.h"
#include "stats/memory_percent.h"
#include "stats/nvapi_status.h"

namespace {

// What the vendor's own loader returns for a function that the driver does not have.
template <typename... Parameters>
Nvapi::Status call(Nvapi::Status (*function)(Parameters...), std::type_identity_t<Parameters>... arguments) {
    return function != nullptr ? function(arguments...) : Nvapi::kNoImplementation;
}

constexpr std::int64_t kFirstRestartPauseMs = 4'000;
constexpr std::int64_t kLongestRestartPauseMs = 60'000;

bool isOfLostDriver(Nvapi::Status status) {
    return status == Nvapi::kApiNotInitialized || status == Nvapi::kDeviceNotFound ||
           status == Nvapi::kInvalidHandle;
}

}  // namespace

GpuNvidia::GpuNvidia() : restarts_(kFirstRestartPauseMs, kLongestRestartPauseMs) {}

GpuNvidia::~GpuNvidia() {
    if (library_ != nullptr) {
        library_->unload();
    }
}

bool GpuNvidia::initialise() {
    Nvapi::Status status = Nvapi::kOk;
    library_ = NvapiLibrary::start(status);
    statuses_.initialisation = status;
    usable_ = check(status, L"Failed to initialize Nvidia API") &&
              check(findFirstGpu(), L"Failed to get primary GPU");
    return usable_;
}

Nvapi::Status GpuNvidia::findFirstGpu() {
    std::array<Nvapi::GpuHandle, Nvapi::kMaxPhysicalGpus> handles{};
    std::uint32_t count = 0;
    const Nvapi::Status status = call(library_->entries().EnumPhysicalGpus, handles.data(), &count);
    statuses_.enumeration = status;
    gpuHandle_ = status == Nvapi::kOk ? handles.front() : nullptr;
    return status;
}

bool GpuNvidia::hasGpu() {
    if (gpuHandle_ == nullptr && statuses_.initialisation == Nvapi::kOk) {
        judge(findFirstGpu());
    }
    return gpuHandle_ != nullptr;
}

// A function that the driver does not have says nothing.
void GpuNvidia::judge(Nvapi::Status status) {
    if (isOfLostDriver(status)) {
        lossSeen_ = true;
    } else if (status != Nvapi::kNoImplementation) {
        lifeSeen_ = true;
    }
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

// After a stale handle once more with a new one. A new one that is refused as well costs this figure only.
template <typename Ask>
Nvapi::Status GpuNvidia::askGpu(const Ask& ask) {
    if (gpuHandle_ == nullptr) {
        return Nvapi::kHandleInvalidated;
    }
    Nvapi::Status status = ask();
    judge(status);
    if (status == Nvapi::kHandleInvalidated && findFirstGpu() == Nvapi::kOk && gpuHandle_ != nullptr) {
        status = ask();
    }
    return status;
}

GpuStats GpuNvidia::sample() {
    if (!usable_) {
        return {};
    }
    GpuStats stats = readCard();
    if (statuses_.initialisation == Nvapi::kOk && (lifeSeen_ || !lossSeen_)) {
        restarts_.reset();
    } else if (restarts_.takeTurn(Panelix::awakeMs())) {
        gpuHandle_ = nullptr;
        statuses_.initialisation = library_->restart();
        stats = readCard();
    }
    return stats;
}

GpuStats GpuNvidia::readCard() {
    lossSeen_ = false;
    lifeSeen_ = false;
    GpuStats stats;
    if (hasGpu()) {
        readLoad(stats);
        readTemperature(stats);
        readMemoryLoad(stats);
        readCoreClock(stats);
    }
    return stats;
}

void GpuNvidia::readLoad(GpuStats& stats) {
    Nvapi::DynamicPstates states{};
    const Nvapi::Status status = askGpu([&] {
        states = {};
        states.version = Nvapi::DynamicPstates::kVersion;
        return call(library_->entries().GpuGetDynamicPstatesInfoEx, gpuHandle_, &states);
    });
    statuses_.load = status;
    if (status == Nvapi::kOk) {
        stats.load = static_cast<std::int32_t>(states.utilization[0].percentage);
        stats.loadValid = true;
    }
}

void GpuNvidia::readTemperature(GpuStats& stats) {
    Nvapi::ThermalSettings settings{};
    const Nvapi::Status status = askGpu([&] {
        settings = {};
        settings.version = Nvapi::ThermalSettings::kVersion;
        return call(library_->entries().GpuGetThermalSettings, gpuHandle_, 0, &settings);
    });
    statuses_.temperature = status;
    if (status == Nvapi::kOk) {
        stats.temperature = settings.sensor[0].currentTemp;
        stats.temperatureValid = true;
    }
}

void GpuNvidia::readMemoryLoad(GpuStats& stats) {
    Nvapi::MemoryInfo info{};
    const Nvapi::Status status = askGpu([&] {
        info = {};
        info.version = Nvapi::MemoryInfo::kVersion;
        return call(library_->entries().GpuGetMemoryInfo, gpuHandle_, &info);
    });
    statuses_.memory = status;
    if (status == Nvapi::kOk) {
        stats.memoryLoad =
            videoMemoryPercent(info.availableDedicatedVideoMemory, info.curAvailableDedicatedVideoMemory);
        stats.memoryLoadValid = true;
    }
}

void GpuNvidia::readCoreClock(GpuStats& stats) {
    Nvapi::ClockFrequencies frequencies{};
    const Nvapi::Status status = askGpu([&] {
        frequencies = {};
        frequencies.version = Nvapi::ClockFrequencies::kVersion;
        frequencies.clockType = Nvapi::ClockFrequencies::kCurrentClocks;
        return call(library_->entries().GpuGetAllClockFrequencies, gpuHandle_, &frequencies);
    });
    statuses_.clock = status;
    if (status == Nvapi::kOk) {
        stats.coreClock = frequencies.domain[0].frequency;
        stats.coreClockValid = true;
    }
}

std::wstring GpuNvidia::name() {
    if (!hasGpu()) {
        return {};
    }
    char text[Nvapi::kShortStringLength] = {};
    const Nvapi::Status status = askGpu([&] {
        std::fill(std::begin(text), std::end(text), '\0');
        return call(library_->entries().GpuGetFullName, gpuHandle_, text);
    });
    statuses_.name = status;
    return status == Nvapi::kOk ? wideFromAnsi(textOfField(text)) : std::wstring();
}
