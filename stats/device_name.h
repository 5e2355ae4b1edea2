#pragma once

#include <windows.h>

#include <mmdeviceapi.h>

#include <string>

/// The name that people know an audio device by; empty when it does not tell.
std::wstring friendlyName(IMMDevice& device);
