#pragma once

#include <array>
#include <cstdint>

#include "framework/core/lcd_sdk_abi.h"

namespace Standins {

/// Pixels of the viewer's client area, from its top-left.
struct ViewerRect {
    int x;
    int y;
    int width;
    int height;

    constexpr bool contains(int px, int py) const {
        return px >= x && px < x + width && py >= y && py < y + height;
    }
};

struct ViewerButton {
    std::uint32_t mask;
    ViewerRect rect;
    /// Empty for the arrows.
    const wchar_t* label;
    /// The key that does the same, or empty where the picture says it.
    const wchar_t* keyLabel;
    int virtualKey;
};

inline constexpr int kLcdScale = 2;
inline constexpr ViewerRect kLcdRect = {
    24, 24, Panelix::LcdSdk::kColorWidth* kLcdScale, Panelix::LcdSdk::kColorHeight* kLcdScale};
inline constexpr int kClientWidth = kLcdRect.width + 48;
inline constexpr int kClientHeight = 674;

// Virtual-key codes, so that this header needs nothing of the system.
inline constexpr int kKeyReturn = 0x0D;
inline constexpr int kKeyEscape = 0x1B;
inline constexpr int kKeyLeft = 0x25;
inline constexpr int kKeyUp = 0x26;
inline constexpr int kKeyRight = 0x27;
inline constexpr int kKeyDown = 0x28;

inline constexpr std::array<ViewerButton, 7> kViewerButtons = {{
    {Panelix::LcdSdk::kButtonUp, {312, 524, 64, 40}, L"", L"", kKeyUp},
    {Panelix::LcdSdk::kButtonRight, {380, 568, 64, 40}, L"", L"", kKeyRight},
    {Panelix::LcdSdk::kButtonDown, {312, 612, 64, 40}, L"", L"", kKeyDown},
    {Panelix::LcdSdk::kButtonLeft, {244, 568, 64, 40}, L"", L"", kKeyLeft},
    {Panelix::LcdSdk::kButtonMenu, {64, 562, 120, 52}, L"MENU", L"M", 'M'},
    {Panelix::LcdSdk::kButtonOk, {504, 524, 120, 52}, L"OK", L"Enter", kKeyReturn},
    {Panelix::LcdSdk::kButtonCancel, {504, 600, 120, 52}, L"CANCEL", L"Esc", kKeyEscape},
}};

/// Mask of the button at that point, 0 when there is none.
constexpr std::uint32_t buttonAt(int x, int y) {
    for (const ViewerButton& button : kViewerButtons) {
        if (button.rect.contains(x, y)) {
            return button.mask;
        }
    }
    return 0;
}

/// Mask of the button that the key stands for, 0 when it stands for none.
constexpr std::uint32_t buttonForKey(int virtualKey) {
    for (const ViewerButton& button : kViewerButtons) {
        if (button.virtualKey == virtualKey) {
            return button.mask;
        }
    }
    return 0;
}

}  // namespace Standins
