#pragma once

#include <windows.h>

#include <gdiplus.h>

#include "framework/drawing/surface_settings.h"
#include "pages/main_page_layout.h"
#include "pages/main_page_texts.h"
#include "pages/page_drawing.h"

/// Fonts and text formats of one drawing of the main page; made for the drawing and gone with it.
class TextTools {
public:
    TextTools() {
        setAlignment(centred_, Gdiplus::StringAlignmentCenter, Gdiplus::StringAlignmentCenter);
        setAlignment(rightBottom_, Gdiplus::StringAlignmentFar, Gdiplus::StringAlignmentFar);
        setAlignment(topLeft_, Gdiplus::StringAlignmentNear, Gdiplus::StringAlignmentNear);
    }

    const Gdiplus::Font& font(TextFont which) const {
        switch (which) {
            case TextFont::Figure:
                return figures_;
            case TextFont::Large:
                return large_;
            case TextFont::Detail:
                break;
        }
        return details_;
    }

    /// Null for none.
    const Gdiplus::StringFormat* format(TextAnchor anchor) const {
        switch (anchor) {
            case TextAnchor::Centre:
                return &centred_;
            case TextAnchor::RightBottom:
                return &rightBottom_;
            case TextAnchor::TopLeftByFormat:
                return &topLeft_;
            default:
                return nullptr;
        }
    }

    /// Reads the formats' statuses and so resets them.
    bool allFormatsOk() const { return allOk(centred_, rightBottom_, topLeft_); }

private:
    Gdiplus::FontFamily family_{Panelix::kFontFace};
    Gdiplus::Font figures_{
        &family_, MainPageLayout::kFigureFontPx, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel};
    Gdiplus::Font details_{
        &family_, MainPageLayout::kDetailFontPx, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel};
    Gdiplus::Font large_{
        &family_, MainPageLayout::kLargeFontPx, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel};
    Gdiplus::StringFormat centred_;
    Gdiplus::StringFormat rightBottom_;
    Gdiplus::StringFormat topLeft_;
};
