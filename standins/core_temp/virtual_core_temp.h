#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "standins/call_log.h"
#include "standins/shared_record.h"

namespace Standins {

/// The reader class's functions, as the log names them. First argument in the log: the object's address,
/// second: the index of GetTemp.
enum class CoreTempCall : std::uint32_t {
    Constructor,
    Destructor,
    GetData,
    IsFahrenheit,
    GetCPUName,
    GetCPUSpeed,
    GetFSBSpeed,
    GetMultiplier,
    GetVID,
    GetCPUCount,
    GetCoreCount,
    GetTemp,
};

/// What Core Temp measures.
struct CoreTempFigures {
    static constexpr std::size_t kMaxCores = 256;

    std::uint32_t cpuCount = 0;
    /// Of each CPU.
    std::uint32_t coreCount = 0;
    bool fahrenheit = false;
    float speedMHz = 0.0F;
    float busSpeedMHz = 0.0F;
    float multiplier = 0.0F;
    float vidVolts = 0.0F;
    /// Core k of CPU c at index k + coreCount * c.
    std::array<float, kMaxCores> temperatures{};
};

/// Core Temp as its reader library shows it: one shared record, in which the stand-in GetCoreTempInfo.dll
/// writes the calls that it receives, and from which it takes its answers. A new record says that Core Temp
/// is not running.
class VirtualCoreTemp {
public:
    static constexpr std::size_t kNameLength = 100;

    /// Opens the record, or makes it. Throws std::runtime_error when that fails.
    VirtualCoreTemp();

    /// What GetData returns.
    void setRunning(bool running) noexcept;
    /// At most kNameLength bytes; a name that takes all of them has no terminator.
    void setName(std::string_view name) noexcept;
    /// GetCPUName returns null instead of a text.
    void setNameIsNull(bool isNull) noexcept;
    void setFigures(const CoreTempFigures& figures) noexcept;

    CallLog& log() noexcept;
    std::uint64_t callCount(CoreTempCall call) noexcept;

    // The library's side.

    bool isRunning() const noexcept;
    bool nameIsNull() const noexcept;
    bool isFahrenheit() const noexcept;
    float speedMHz() const noexcept;
    float busSpeedMHz() const noexcept;
    float multiplier() const noexcept;
    float vidVolts() const noexcept;
    std::uint32_t cpuCount() const noexcept;
    std::uint32_t coreCount() const noexcept;
    /// One temperature; 0 beyond the last.
    float temperature(int index) const noexcept;
    /// Copies kNameLength bytes.
    void copyName(char* name) const noexcept;

private:
    struct Record;

    static SharedRecord openRecord();
    Record& record() const noexcept;

    SharedRecord shared_;
};

}  // namespace Standins
