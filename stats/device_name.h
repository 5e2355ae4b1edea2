#pragma once

#include <windows.h>

#include <mmdeviceapi.h>

#include <cstddef>
#include <string>

/// Characters of a device's name that are kept: a row shows fewer, and GDI+ takes its time for each that it
/// is given.
inline constexpr std::size_t kMaxDeviceNameLength = 256;

/// The name that people know an audio device by, at most `length` characters; empty when it does not tell.
std::wstring friendlyName(IMMDevice& device, std::size_t length = kMaxDeviceNameLength);
