#pragma once

#include <cstdint>

namespace Panelix {

/// Codes of the tray menu's items. Those from kCommandAbout on belong to the application and reach
/// App::HandleCommand; pages use them too.
inline constexpr std::uint32_t kCommandShow = 0x8001;
inline constexpr std::uint32_t kCommandHide = 0x8002;
inline constexpr std::uint32_t kCommandExit = 0x8003;
inline constexpr std::uint32_t kCommandAbout = 0x8004;
inline constexpr std::uint32_t kCommandSettings = 0x8005;

}  // namespace Panelix
