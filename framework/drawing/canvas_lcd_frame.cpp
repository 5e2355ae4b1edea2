#include "framework/drawing/canvas.h"

#include <array>

#include "framework/core/unique_resource.h"
#include "framework/drawing/sys_exception.h"

namespace Panelix {

namespace {

/// GetDIBits may write colour masks or a palette after the header that it is given.
struct DibInfo {
    BITMAPINFOHEADER header;
    std::array<RGBQUAD, 256> colours;
};

BITMAPINFO* asBitmapInfo(DibInfo& info) {
    return reinterpret_cast<BITMAPINFO*>(&info);
}

}  // namespace

LcdFrame Canvas::toLcdFrame() {
    // Deleted, not released: the system takes the screen's context back by either call.
    const UniqueDc screen(GetDC(nullptr));
    HBITMAP raw = nullptr;
    // The call's own result: the surface may still hold the status of an earlier failure.
    lastStatus_ = surface_.GetHBITMAP(Gdiplus::Color(0, 0, 0, 0), &raw);
    const UniqueBitmap bitmap(raw);
    checkStatus(L"Failed to retrieve background bitmap");

    DibInfo info{};
    info.header.biSize = sizeof(info.header);
    GetDIBits(screen.get(), bitmap.get(), 0, 0, nullptr, asBitmapInfo(info), DIB_RGB_COLORS);
    if (info.header.biWidth != kLcdWidth || info.header.biHeight != kLcdHeight) {
        throw SysException(L"Bitmap incorrect size", L"Drawing Error");
    }
    info.header.biCompression = BI_RGB;
    // Negative: rows from top to bottom.
    info.header.biHeight = -kLcdHeight;
    LcdFrame frame = std::make_unique_for_overwrite<std::uint8_t[]>(kLcdFrameBytes);
    const int lines =
        GetDIBits(screen.get(), bitmap.get(), 0, kLcdHeight, frame.get(), asBitmapInfo(info), DIB_RGB_COLORS);
    if (lines != kLcdHeight) {
        lastStatus_ = Gdiplus::Win32Error;
        checkStatus(L"Failed to retrieve background bitmap");
    }
    return frame;
}

}  // namespace Panelix
