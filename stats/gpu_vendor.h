#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

/// One reading of a graphics card. A figure whose flag is false could not be read and is 0.
struct GpuStats {
    /// Graphics engine utilisation in percent.
    std::int32_t load = 0;
    /// Degrees Celsius.
    std::int32_t temperature = 0;
    /// Video memory in use, in percent.
    std::int32_t memoryLoad = 0;
    /// Graphics clock in kHz.
    std::uint32_t coreClock = 0;
    bool loadValid = false;
    bool temperatureValid = false;
    bool memoryLoadValid = false;
    bool coreClockValid = false;

    friend bool operator==(const GpuStats&, const GpuStats&) = default;
};

static_assert(sizeof(GpuStats) == 20 && std::is_trivially_copyable_v<GpuStats>);

/// A source of graphics-card figures. No failure of a driver throws: lastError tells what went wrong. Only
/// memory that runs out while texts are made does. Main thread only.
class GpuVendor {
public:
    GpuVendor() = default;
    virtual ~GpuVendor() = default;
    GpuVendor(const GpuVendor&) = delete;
    GpuVendor& operator=(const GpuVendor&) = delete;

    /// Finds driver and card. After false the source is of no use and is destroyed. Called once.
    virtual bool initialise() = 0;

    /// One reading; each figure is read whether or not the others could be.
    virtual GpuStats sample() = 0;

    /// The card's name. When the driver does not tell, what each source says.
    virtual std::wstring name() = 0;

    /// What the last failure was; empty while there was none.
    const std::wstring& lastError() const { return lastError_; }

protected:
    void setLastError(std::wstring text) { lastError_ = std::move(text); }

private:
    std::wstring lastError_;
};
