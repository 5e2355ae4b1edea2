#pragma once

#include <cstdint>

namespace Panelix {

/// Sizes in bytes of the notification area's icon record: the whole of it, and the part that shells before
/// version 5.0 know, which ends before the record's GUID.
inline constexpr std::uint32_t kTrayRecordBytes = 976;
inline constexpr std::uint32_t kOldTrayRecordBytes = 952;

/// A library's version as one number that compares like the version: `major` in bits 48 to 63, `minor` in
/// bits 32 to 47.
std::uint64_t packVersion(std::uint32_t major, std::uint32_t minor);

/// The record's size for the shell of that packed version; 0 stands for an unknown version.
std::uint32_t trayRecordBytes(std::uint64_t shellVersion);

}  // namespace Panelix
