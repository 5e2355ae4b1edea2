#include "standins/xinput/virtual_gamepad.h"

#include <array>
#include <atomic>

namespace Standins {

namespace {

// "KXIN" and the version of the layout below: raise it with every change.
constexpr std::uint64_t kIdentity = 0x4B58'494E'0000'0002;

struct GamepadSlot {
    std::atomic<std::uint32_t> connected;
    std::atomic<std::uint8_t> batteryType;
    std::atomic<std::uint8_t> batteryLevel;
};

}  // namespace

struct VirtualGamepads::Record {
    std::atomic<std::uint64_t> identity;
    std::array<GamepadSlot, kUsers> gamepads;
    std::atomic<std::uint32_t> batteryResult;
    CallLog log;
};

VirtualGamepads::VirtualGamepads() : shared_(openRecord()) {}

SharedRecord VirtualGamepads::openRecord() {
    return SharedRecord(sectionName(L"VirtualGamepads"), kIdentity, sizeof(Record));
}

VirtualGamepads::Record& VirtualGamepads::record() const noexcept {
    return *static_cast<Record*>(shared_.data());
}

void VirtualGamepads::setConnected(std::size_t user, bool connected) noexcept {
    record().gamepads[user].connected = connected ? 1 : 0;
}

void VirtualGamepads::setBattery(std::size_t user, std::uint8_t type, std::uint8_t level) noexcept {
    record().gamepads[user].batteryType = type;
    record().gamepads[user].batteryLevel = level;
}

void VirtualGamepads::setBatteryResult(std::uint32_t result) noexcept {
    record().batteryResult = result;
}

CallLog& VirtualGamepads::log() noexcept {
    return record().log;
}

std::uint64_t VirtualGamepads::callCount(XinputCall call) noexcept {
    return log().count(static_cast<std::uint32_t>(call));
}

bool VirtualGamepads::isConnected(std::size_t user) const noexcept {
    return record().gamepads[user].connected != 0;
}

std::uint8_t VirtualGamepads::batteryType(std::size_t user) const noexcept {
    return record().gamepads[user].batteryType;
}

std::uint8_t VirtualGamepads::batteryLevel(std::size_t user) const noexcept {
    return record().gamepads[user].batteryLevel;
}

std::uint32_t VirtualGamepads::batteryResult() const noexcept {
    return record().batteryResult;
}

}  // namespace Standins
