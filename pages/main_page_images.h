#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <array>
#include <cstddef>

namespace Panelix {
class Canvas;
}

/// The main page's images in the order in which they are loaded.
enum class MainPageImage {
    Background,
    Mail,
    Picture,
    Shade,
    Overlay,
    MicrophoneOn,
    MicrophoneMuted,
    SpeakerOn,
    SpeakerMuted,
    BatteryFull,
    BatteryMedium,
    BatteryLow,
    BatteryEmpty,
    Count
};

/// All images of the main page, borrowed from whoever loaded them; null where there is none.
struct MainPageImages {
    Gdiplus::Bitmap* operator[](MainPageImage image) const {
        return bitmaps[static_cast<std::size_t>(image)];
    }
    Gdiplus::Bitmap*& operator[](MainPageImage image) { return bitmaps[static_cast<std::size_t>(image)]; }

    std::array<Gdiplus::Bitmap*, static_cast<std::size_t>(MainPageImage::Count)> bitmaps{};
};

/// Loads all of them through `canvas`, which owns them and throws what its getImage throws. COM must be
/// running on the thread.
MainPageImages loadMainPageImages(Panelix::Canvas& canvas);
