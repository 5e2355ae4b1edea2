// The stand-in for XInput: both functions record their call in the virtual gamepads' record and answer what
// the record says. The .def file gives them their ordinals.

#include "standins/xinput/virtual_gamepad.h"

#include <windows.h>

#include <cstring>
#include <exception>
#include <memory>

namespace {

using Standins::VirtualGamepads;
using Standins::XinputCall;

// Null when the record cannot be opened: there is no gamepad then.
VirtualGamepads* gamepads() noexcept {
    static const std::unique_ptr<VirtualGamepads> instance =
        []() noexcept -> std::unique_ptr<VirtualGamepads> {
        try {
            return std::make_unique<VirtualGamepads>();
        } catch (const std::exception&) {
            return nullptr;
        }
    }();
    return instance.get();
}

bool enter(XinputCall call, DWORD user, std::uint8_t device = 0) noexcept {
    if (gamepads() == nullptr) {
        return false;
    }
    gamepads()->log().add(static_cast<std::uint32_t>(call), {user, device});
    return user < VirtualGamepads::kUsers && gamepads()->isConnected(user);
}

}  // namespace

extern "C" {

DWORD WINAPI XInputGetState(DWORD user, void* state) noexcept {
    constexpr std::size_t kStateBytes = 16;
    if (!enter(XinputCall::GetState, user)) {
        return ERROR_DEVICE_NOT_CONNECTED;
    }
    std::memset(state, 0, kStateBytes);
    return ERROR_SUCCESS;
}

DWORD WINAPI XInputGetBatteryInformation(DWORD user, BYTE device, BYTE* information) noexcept {
    if (!enter(XinputCall::GetBatteryInformation, user, device)) {
        return ERROR_DEVICE_NOT_CONNECTED;
    }
    const std::uint32_t result = gamepads()->batteryResult();
    if (result == ERROR_SUCCESS) {
        information[0] = gamepads()->batteryType(user);
        information[1] = gamepads()->batteryLevel(user);
    }
    return result;
}

}  // extern "C"
