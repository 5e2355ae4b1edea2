#include "stats/system_info.h"

#include <windows.h>

#include <optional>
#include <tuple>
#include <utility>

#include "framework/core/local_time.h"
#include "framework/drawing/sys_exception.h"
#include "stats/clock_text.h"
#include "stats/core_temp_reading.h"
#include "stats/gamepad_battery.h"
#include "stats/gpu_amd.h"
#include "stats/gpu_nvidia.h"
#include "stats/physical_memory.h"
#include "stats/unread_mail.h"

namespace {

constexpr wchar_t kErrorTitle[] = L"System Info Error";

GUID createEventContext() {
    GUID guid{};
    if (FAILED(CoCreateGuid(&guid))) {
        throw Panelix::SysException(L"Could not create Guid", kErrorTitle);
    }
    return guid;
}

Microsoft::WRL::ComPtr<IMMDeviceEnumerator> createDeviceEnumerator() {
    Microsoft::WRL::ComPtr<IMMDeviceEnumerator> enumerator;
    if (FAILED(
            CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL, IID_PPV_ARGS(&enumerator)))) {
        throw Panelix::SysException(L"Could not create Audio Device Enumerator", kErrorTitle);
    }
    return enumerator;
}

template <typename Vendor>
std::unique_ptr<GpuVendor> tryGpu() {
    auto gpu = std::make_unique<Vendor>();
    return gpu->initialise() ? std::move(gpu) : nullptr;
}

std::unique_ptr<GpuVendor> chooseGpu() {
    std::unique_ptr<GpuVendor> gpu = tryGpu<GpuNvidia>();
    return gpu != nullptr ? std::move(gpu) : tryGpu<GpuAmd>();
}

bool isSameSecond(const std::tm& left, const std::tm& right) {
    const auto shown = [](const std::tm& time) {
        return std::tie(time.tm_year, time.tm_mon, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
    };
    return shown(left) == shown(right);
}

}  // namespace

SystemInfo::SystemInfo()
    : RateUpdater(kUpdatePeriodMs),
      eventContext_(createEventContext()),
      deviceEnumerator_(createDeviceEnumerator()) {
    bindAudio();
    cpuMeter_ = std::make_unique<CpuLoadMeter>();
    gpu_ = chooseGpu();
    gpuAvailable = gpu_ != nullptr;
    if (gpu_ != nullptr) {
        gpuName = gpu_->name();
    }
    coreTempLibrary_ = CoreTempLibrary::load();
}

// The notifications first, because they write into the snapshot.
SystemInfo::~SystemInfo() {
    releaseAudio();
    deviceEnumerator_.Reset();
    gpu_.reset();
    cpuMeter_.reset();
}

void SystemInfo::update() {
    followDefaultDevices();
    sampleCoreTemp();
    cpuLoad = cpuMeter_->sample();
    if (gpu_ != nullptr) {
        gpuStats = gpu_->sample();
    }
    sampleUnreadMail();
    memoryLoad = readPhysicalMemoryPercent();
    gamepadBattery = readGamepadBattery();
    dataReady = true;
}

// Without an answer the figures stay what they were.
void SystemInfo::sampleCoreTemp() {
    std::optional<CoreTempReading> reading = readCoreTemp(coreTempLibrary_.get());
    coreTempAvailable = reading.has_value();
    if (!reading) {
        return;
    }
    cpuTempFahrenheit = reading->fahrenheit;
    cpuName = std::move(reading->name);
    cpuClockText = std::move(reading->clockText);
    cpuVid = reading->vid;
    cpuTemperature = reading->temperature;
}

// The walk through the registry is the costliest step, so most updates leave it out.
void SystemInfo::sampleUnreadMail() {
    if (mailPollCounter_ < mailPollLimit_) {
        ++mailPollCounter_;
        return;
    }
    unreadMail = readUnreadMail();
    mailPollCounter_ = 0;
}

const std::wstring& SystemInfo::dateTimeText() {
    timeRecord = Panelix::localTime();
    if (dateTimeText_.empty() || !isSameSecond(timeRecord, toldTime_)) {
        dateTimeText_ = clockText(timeRecord);
        toldTime_ = timeRecord;
    }
    return dateTimeText_;
}
