#pragma once

namespace Panelix {

/// Name and meaning of a GDI+ status, whatever the value. Static text, never null.
const wchar_t* gdiplusStatusText(int status) noexcept;

}  // namespace Panelix
