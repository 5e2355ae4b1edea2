#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "framework/drawing/lcd_frame.h"
#include "framework/drawing/saved_pixels.h"
#include "pages/main_page_layout.h"

/// Every place of the main page in which a text can stand.
enum class MainPageText {
    MailCount,
    CpuLabel,
    CpuName,
    CpuClock,
    CpuVid,
    CpuTemperature,
    GpuLabel,
    GpuName,
    GpuClock,
    GpuTemperature,
    GpuErrors,
    VolumeFigure,
    Clock,
    Count
};

/// What a text's point is: its top-left corner, without any format or with one, its centre, or its
/// bottom-right corner.
enum class TextAnchor { TopLeft, TopLeftByFormat, Centre, RightBottom };

enum class TextFont { Figure, Detail, Large };

/// The height of the font's letters in pixels.
constexpr float heightPx(TextFont font) {
    switch (font) {
        case TextFont::Figure:
            return MainPageLayout::kFigureFontPx;
        case TextFont::Large:
            return MainPageLayout::kLargeFontPx;
        case TextFont::Detail:
            break;
    }
    return MainPageLayout::kDetailFontPx;
}

struct MainPageTextStyle {
    PagePoint point;
    TextFont font;
    TextAnchor anchor;
};

inline constexpr std::size_t kMainPageTexts = static_cast<std::size_t>(MainPageText::Count);

constexpr MainPageTextStyle styleOf(MainPageText text) {
    namespace Layout = MainPageLayout;
    using enum TextAnchor;
    // In the order of MainPageText.
    constexpr std::array<MainPageTextStyle, kMainPageTexts> kStyles{{
        {Layout::kMailCount, TextFont::Large, TopLeftByFormat},
        {Layout::kCpuLabel, TextFont::Detail, TopLeft},
        {Layout::kCpuName, TextFont::Detail, TopLeft},
        {Layout::kCpuClock, TextFont::Detail, TopLeft},
        {Layout::kCpuVid, TextFont::Detail, TopLeft},
        {Layout::kCpuTemperature, TextFont::Figure, RightBottom},
        {Layout::kGpuLabel, TextFont::Detail, TopLeft},
        {Layout::kGpuName, TextFont::Detail, TopLeft},
        {Layout::kGpuClock, TextFont::Detail, TopLeft},
        {Layout::kGpuTemperature, TextFont::Figure, RightBottom},
        {Layout::kGpuErrors, TextFont::Detail, TopLeft},
        {Layout::kVolumeFigure, TextFont::Large, Centre},
        {Layout::kClock, TextFont::Figure, Centre},
    }};
    return kStyles[static_cast<std::size_t>(text)];
}

/// The part of the LCD that one line of so many letters in this style reaches, whichever they are, and some
/// more.
constexpr Panelix::PixelRect reachOf(const MainPageTextStyle& style, std::size_t letters) {
    // A line of the font is 1.15 times as high as its letters are said to be; the widest of them, "@", is
    // about as wide as that. Beside a text GDI+ leaves some room, within its bounds or beyond them.
    const float fontPx = heightPx(style.font);
    const int height = static_cast<int>(fontPx * 1.15F) + 1;
    const auto mostLetters = static_cast<float>(std::min<std::size_t>(letters, Panelix::kLcdWidth));
    const int width = static_cast<int>(fontPx * 1.15F * mostLetters);
    const int marginX = static_cast<int>(fontPx);
    constexpr int kMarginY = 2;
    PagePoint corner = style.point;
    if (style.anchor == TextAnchor::Centre) {
        corner = {corner.x - width / 2, corner.y - height / 2};
    } else if (style.anchor == TextAnchor::RightBottom) {
        corner = {corner.x - width, corner.y - height};
    }
    const int left = std::max(corner.x - marginX, 0);
    const int top = std::max(corner.y - kMarginY, 0);
    const int right = std::min(corner.x + width + marginX, Panelix::kLcdWidth);
    const int bottom = std::min(corner.y + height + kMarginY, Panelix::kLcdHeight);
    return {left, top, right - left, bottom - top};
}
