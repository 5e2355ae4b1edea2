#pragma once

#include <memory>
#include <optional>
#include <string>

#include "stats/gpu_vendor.h"
#include "stats/nvapi_library.h"
#include "stats/retry_pause.h"

/// What the latest call of each function returned; nothing before the first.
struct NvidiaStatuses {
    std::optional<Nvapi::Status> initialisation;
    std::optional<Nvapi::Status> enumeration;
    std::optional<Nvapi::Status> name;
    std::optional<Nvapi::Status> load;
    std::optional<Nvapi::Status> temperature;
    std::optional<Nvapi::Status> memory;
    std::optional<Nvapi::Status> clock;
};

/// NVIDIA's first graphics card, through NVAPI. A driver that lacks a function counts as one whose call
/// failed. When a change of displays or cards makes the card's handle stale, the cards are enumerated anew,
/// in the same reading, or in a later one as soon as the driver lets them be. A driver that was replaced, or
/// that a wake has left in disorder, fails every call for ever: it is started anew, at once and then after
/// pauses of 4 s to a minute (of the time in which the machine is awake) until it answers.
class GpuNvidia : public GpuVendor {
public:
    GpuNvidia();
    ~GpuNvidia() override;

    bool initialise() override;
    /// Before a successful initialise() nothing is read.
    GpuStats sample() override;
    /// Empty when the driver does not tell.
    std::wstring name() override;

    const NvidiaStatuses& statuses() const { return statuses_; }
    /// The driver's text for a status, or NVAPI's name of it when the driver tells none.
    std::wstring statusText(Nvapi::Status status) const;

private:
    bool check(Nvapi::Status status, const wchar_t* context);
    GpuStats readCard();
    Nvapi::Status findFirstGpu();
    /// What a call of the running pass says about the driver.
    void judge(Nvapi::Status status);
    /// Whether there is a handle; without one the cards are enumerated.
    bool hasGpu();
    template <typename Ask>
    Nvapi::Status askGpu(const Ask& ask);
    void readLoad(GpuStats& stats);
    void readTemperature(GpuStats& stats);
    void readMemoryLoad(GpuStats& stats);
    void readCoreClock(GpuStats& stats);

    /// Null before initialise(), and after it when there is no driver.
    std::unique_ptr<NvapiLibrary> library_;
    /// Null when the last enumeration gave none.
    Nvapi::GpuHandle gpuHandle_ = nullptr;
    NvidiaStatuses statuses_;
    /// initialise() has succeeded.
    bool usable_ = false;
    /// Calls of the running pass have failed as all calls do once the driver has lost the program.
    bool lossSeen_ = false;
    /// A call had another result, so the driver still works for this process.
    bool lifeSeen_ = false;
    RetryPause restarts_;
};
