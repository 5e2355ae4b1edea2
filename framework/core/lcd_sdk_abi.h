#pragma once

#include <cstddef>
#include <cstdint>

/// The keyboard vendor's LCD library as a caller sees it on x64: exported C names, one calling convention,
/// `bool` of one byte, UTF-16 text. The vendor's reference is not public; names, signatures and values are
/// those that the documentation of published bindings agrees on. It calls the frame "32-bit RGBA", which
/// names the components; their order in memory is blue, green, red, alpha. Nothing says that the library is
/// thread-safe: call it from one thread.
namespace Panelix::LcdSdk {

/// The unnamed value of this key under HKEY_LOCAL_MACHINE is the full path of the library; the vendor's LCD
/// manager writes it.
inline constexpr wchar_t kServerBinaryKey[] =
    L"SOFTWARE\\Classes\\CLSID\\{D0E790A5-01A7-49AE-AE0B-E986BDD0C21B}\\ServerBinary";

// Kinds of LCD.
inline constexpr int kTypeMono = 0x1;
inline constexpr int kTypeColor = 0x2;

// Buttons of the colour LCD, one bit each.
inline constexpr int kButtonLeft = 0x0100;
inline constexpr int kButtonRight = 0x0200;
inline constexpr int kButtonOk = 0x0400;
inline constexpr int kButtonCancel = 0x0800;
inline constexpr int kButtonUp = 0x1000;
inline constexpr int kButtonDown = 0x2000;
inline constexpr int kButtonMenu = 0x4000;

// A colour frame: rows top to bottom without padding, four bytes per pixel.
inline constexpr int kColorWidth = 320;
inline constexpr int kColorHeight = 240;
inline constexpr std::size_t kColorFrameBytes = std::size_t{kColorWidth} * kColorHeight * 4;

// Function types, named like the exports.

/// Announces the program under `friendlyName` for the given kind of LCD. False when there is none.
using LogiLcdInit = bool(const wchar_t* friendlyName, int lcdType);
using LogiLcdIsConnected = bool(int lcdType);
/// `button` is one mask. True while the button is down and this program is the one that the LCD shows.
using LogiLcdIsButtonPressed = bool(int button);
/// Once per frame: the LCD takes over what was set since the last call.
using LogiLcdUpdate = void();
using LogiLcdShutdown = void();
/// 160 x 43 pixels of one byte.
using LogiLcdMonoSetBackground = bool(std::uint8_t* bitmap);
using LogiLcdMonoSetText = bool(int line, wchar_t* text);
/// kColorFrameBytes bytes, copied before the call returns.
using LogiLcdColorSetBackground = bool(std::uint8_t* bitmap);
using LogiLcdColorSetTitle = bool(wchar_t* text, int red, int green, int blue);
using LogiLcdColorSetText = bool(int line, wchar_t* text, int red, int green, int blue);

static_assert(sizeof(bool) == 1, "the library returns one byte: only AL is defined");
static_assert(sizeof(int) == 4);
static_assert(kColorFrameBytes == 307'200);
static_assert((kButtonLeft | kButtonRight | kButtonOk | kButtonCancel | kButtonUp | kButtonDown |
               kButtonMenu) == 0x7F00,
              "seven buttons, seven different bits");

}  // namespace Panelix::LcdSdk
