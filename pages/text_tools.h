#pragma once

#include <windows.h>

#include <gdiplus.h>

#include "framework/drawing/surface_settings.h"
#include "pages/main_page_layout.h"
#include "pages/page_drawing.h"

/// Fonts and text formats of one drawing of the main page; made for each drawing and gone with it.
struct TextTools {
    TextTools() {
        setAlignment(centred, Gdiplus::StringAlignmentCenter, Gdiplus::StringAlignmentCenter);
        setAlignment(rightBottom, Gdiplus::StringAlignmentFar, Gdiplus::StringAlignmentFar);
        setAlignment(topLeft, Gdiplus::StringAlignmentNear, Gdiplus::StringAlignmentNear);
    }

    Gdiplus::FontFamily family{Panelix::kFontFace};
    Gdiplus::Font figures{
        &family, MainPageLayout::kFigureFontPx, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel};
    Gdiplus::Font details{
        &family, MainPageLayout::kDetailFontPx, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel};
    Gdiplus::Font large{&family, MainPageLayout::kLargeFontPx, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel};
    Gdiplus::StringFormat centred;
    Gdiplus::StringFormat rightBottom;
    Gdiplus::StringFormat topLeft;
};
