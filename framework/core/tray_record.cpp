#include "framework/core/tray_record.h"

namespace Panelix {

std::uint64_t packVersion(std::uint32_t major, std::uint32_t minor) {
    return (std::uint64_t{major & 0xFFFFU} << 48U) | (std::uint64_t{minor & 0xFFFFU} << 32U);
}

std::uint32_t trayRecordBytes(std::uint64_t shellVersion) {
    return shellVersion < packVersion(5, 0) ? kOldTrayRecordBytes : kTrayRecordBytes;
}

}  // namespace Panelix
