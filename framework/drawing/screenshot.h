#pragma once

#include <windows.h>

#include <string>

namespace Panelix {

/// The current local time as screenshot files are named.
std::wstring screenshotTimeText();

/// Index of GDI+'s image encoder for exactly this MIME type, and its class in `clsid`. -1, with `clsid`
/// untouched, when there is none, when GDI+ fails or when memory is short. Neither is null.
int findEncoderClsid(const wchar_t* mimeType, CLSID* clsid) noexcept;

/// Full name of the screenshot file of this second in the user's Documents folder; empty when Windows does
/// not give the folder.
std::wstring screenshotPath();

}  // namespace Panelix
