#include "framework/core/lcd_device.h"

#include "framework/core/lcd_library.h"
#include "framework/core/lcd_sdk_abi.h"

namespace Panelix {

namespace {

/// The vendor's mask of each button, in the order of LcdButton.
constexpr std::array<int, kLcdButtonCount> kPolledMasks = {
    LcdSdk::kButtonUp,
    LcdSdk::kButtonRight,
    LcdSdk::kButtonDown,
    LcdSdk::kButtonLeft,
    LcdSdk::kButtonMenu,
    LcdSdk::kButtonOk,
    LcdSdk::kButtonCancel,
};

}  // namespace

LcdDevice::~LcdDevice() {
    if (initialised_) {
        lcdShutdown();
    }
}

bool LcdDevice::Init(const std::wstring& name) {
    initialised_ = LoadLcdLibrary(name.c_str(), LcdSdk::kTypeColor);
    return initialised_;
}

void LcdDevice::PollButtons() {
    for (std::size_t i = 0; i < kLcdButtonCount; ++i) {
        const bool down = lcdIsButtonPressed(kPolledMasks[i]);
        buttons_.pressed[i] = down && !buttons_.held[i];
        buttons_.held[i] = down;
    }
}

void LcdDevice::PushFrame(const LcdFrame& frame) {
    lcdSetColorBackground(frame.get());
}

void LcdDevice::Update() {
    lcdUpdate();
}

}  // namespace Panelix
