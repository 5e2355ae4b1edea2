#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "standins/call_log.h"
#include "standins/shared_record.h"

namespace Standins {

/// ADL2's functions, as the log names them. First argument in the log: the number of the context, which
/// Create hands out as 1, 2 and so on; second: the adapter.
enum class AdlCall : std::uint32_t {
    MainControlCreate,  ///< Arguments: whether a callback was given, the flag for connected adapters.
    MainControlDestroy,
    AdapterNumberOfAdaptersGet,
    AdapterAdapterInfoX2Get,
    AdapterActiveGet,
    Overdrive6TemperatureGet,
    Overdrive6CurrentStatusGet,
};

inline constexpr std::size_t kAdlCallCount = 7;

/// What one adapter answers.
struct RadeonFigures {
    std::int32_t activityPercent = 0;
    std::int32_t engineClock = 0;              ///< Units of 10 kHz.
    std::int32_t temperatureMillidegrees = 0;  ///< Celsius.
};

/// The virtual AMD driver: one shared record, in which the stand-in atiadlxx.dll writes the calls that it
/// receives, and from which it takes its answers. A new record has no adapter, and every call succeeds.
class VirtualRadeon {
public:
    static constexpr std::size_t kMaxAdapters = 4;
    static constexpr std::size_t kNameLength = 256;

    /// Opens the record, or makes it. Throws std::runtime_error when that fails.
    VirtualRadeon();

    /// Any number, also a negative one; the first kMaxAdapters have figures and names.
    void setAdapterCount(std::int32_t count) noexcept;
    /// At most kNameLength bytes; a name that takes all of them has no terminator.
    void setName(std::size_t adapter, std::string_view name) noexcept;
    void setFigures(std::size_t adapter, const RadeonFigures& figures) noexcept;
    /// What the call returns; it hands nothing out unless that is 0.
    void setStatus(AdlCall call, std::int32_t status) noexcept;
    /// Calls that fail hand out what they would if they had succeeded.
    void setWritesBeforeItFails(bool writes) noexcept;

    CallLog& log() noexcept;
    std::uint64_t callCount(AdlCall call) noexcept;

    // The library's side.

    std::int32_t status(AdlCall call) const noexcept;
    bool writesBeforeItFails() const noexcept;
    std::int32_t adapterCount() const noexcept;
    RadeonFigures figures(std::size_t adapter) const noexcept;
    /// Copies kNameLength bytes.
    void copyName(std::size_t adapter, char* name) const noexcept;

private:
    struct Record;

    static SharedRecord openRecord();
    Record& record() const noexcept;

    SharedRecord shared_;
};

}  // namespace Standins
