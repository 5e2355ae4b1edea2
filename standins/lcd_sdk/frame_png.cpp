#include "standins/lcd_sdk/frame_png.h"

namespace Standins {

namespace {

// The PNG encoder's class, the same on every Windows.
constexpr CLSID kPngEncoder = {0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

}  // namespace

bool saveFramePng(const G19Frame& frame, const std::wstring& path) {
    using namespace Panelix::LcdSdk;
    // Without the frame's alpha byte, which the LCD ignores. The target is a bitmap of its own, since GDI+
    // only borrows the pixels that it is given.
    Gdiplus::Bitmap picture(kColorWidth, kColorHeight, PixelFormat24bppRGB);
    for (int y = 0; y < kColorHeight; ++y) {
        for (int x = 0; x < kColorWidth; ++x) {
            const std::size_t offset =
                (static_cast<std::size_t>(y) * kColorWidth + static_cast<std::size_t>(x)) * 4;
            const std::uint8_t* const pixel = frame.pixels.data() + offset;
            picture.SetPixel(x, y, Gdiplus::Color(pixel[2], pixel[1], pixel[0]));
        }
    }
    return savePng(picture, path);
}

bool savePng(Gdiplus::Bitmap& picture, const std::wstring& path) {
    return picture.Save(path.c_str(), &kPngEncoder, nullptr) == Gdiplus::Ok;
}

}  // namespace Standins
