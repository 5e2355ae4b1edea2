#pragma once

#include <cstdint>

namespace Panelix {

/// Finds the LCD vendor's library through its registration, loads it, looks its entries up and announces the
/// applet under `friendlyName` for LCDs of `lcdType` (LcdSdk::kType...). False when any of that fails. One
/// call per process; the library is never unloaded, because its own threads may still run.
bool LoadLcdLibrary(const wchar_t* friendlyName, int lcdType);

/// The library's calls. Each does nothing (a button is then not pressed) while its entry is missing.
bool lcdIsButtonPressed(int mask);
void lcdUpdate();
void lcdShutdown();
/// `frame`: kLcdFrameBytes bytes, read during the call only.
void lcdSetColorBackground(std::uint8_t* frame);

}  // namespace Panelix
