#pragma once

#include <cstddef>
#include <cstdint>

#include "standins/call_log.h"
#include "standins/shared_record.h"

namespace Standins {

/// XInput's functions, as the log names them. Arguments in the log: the user's index, the kind of device.
enum class XinputCall : std::uint32_t {
    GetState,
    GetBatteryInformation,
};

/// The virtual gamepads: one shared record, in which the stand-in XINPUT1_4.dll writes the calls that it
/// receives, and from which it takes its answers. A new record has no gamepad.
class VirtualGamepads {
public:
    static constexpr std::size_t kUsers = 4;

    /// Opens the record, or makes it. Throws std::runtime_error when that fails.
    VirtualGamepads();

    void setConnected(std::size_t user, bool connected) noexcept;
    /// XInput's BATTERY_TYPE_... and BATTERY_LEVEL_..., or anything else.
    void setBattery(std::size_t user, std::uint8_t type, std::uint8_t level) noexcept;
    /// What XInputGetBatteryInformation returns for a connected gamepad; it hands nothing out unless that is
    /// 0.
    void setBatteryResult(std::uint32_t result) noexcept;

    CallLog& log() noexcept;
    std::uint64_t callCount(XinputCall call) noexcept;

    // The library's side.

    bool isConnected(std::size_t user) const noexcept;
    std::uint8_t batteryType(std::size_t user) const noexcept;
    std::uint8_t batteryLevel(std::size_t user) const noexcept;
    std::uint32_t batteryResult() const noexcept;

private:
    struct Record;

    static SharedRecord openRecord();
    Record& record() const noexcept;

    SharedRecord shared_;
};

}  // namespace Standins
