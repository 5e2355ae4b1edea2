#pragma once

#include <cstdint>

/// A colour as GDI+ takes it: alpha, red, green and blue from the highest byte to the lowest.
using Argb = std::uint32_t;

/// Every colour that the pages draw with.
namespace Palette {

inline constexpr Argb kCpuText = 0xFF00C8C8;
inline constexpr Argb kCpuLevel = 0x64FF0000;
inline constexpr Argb kCpuHistory = 0x96FF0000;
inline constexpr Argb kMemoryBar = 0xC8FF3C00;

inline constexpr Argb kGpuText = 0xFF32C864;
inline constexpr Argb kGpuLevel = 0x64006FF0;
inline constexpr Argb kGpuHistory = 0x96006FF0;
inline constexpr Argb kGpuMemoryBar = 0xC8008BC1;
inline constexpr Argb kGpuErrorText = 0xFFC8C850;

inline constexpr Argb kMailText = 0xFF005DAF;
inline constexpr Argb kClockText = 0xFFFFFFFF;

inline constexpr Argb kMasterVolumeText = 0xFF000000;
/// The volume bars, and the figure of the selected channel.
inline constexpr Argb kChannelVolume = 0xC8225D80;
inline constexpr Argb kSelectedChannel = 0xC800FFFF;

/// Arrow, title and rows of the list pages.
inline constexpr Argb kListText = 0xFFFFFFFF;
inline constexpr Argb kListCursor = 0x3280FFFF;
inline constexpr Argb kListActiveDevice = 0xC8008080;

}  // namespace Palette
