#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <string>

#include "pages/page_geometry.h"
#include "pages/palette.h"

// What the pages' drawing has in common. A failed GDI+ call stays in the last status of the object it was
// made on, and drawing goes on.

/// Draws `text` at a point: without a layout box it is neither wrapped nor clipped, and `format` places it
/// relative to the point. A null format puts the top-left corner there.
void drawText(Gdiplus::Graphics& graphics,
              const std::wstring& text,
              const Gdiplus::Font& font,
              const Gdiplus::PointF& point,
              const Gdiplus::StringFormat* format,
              const Gdiplus::Brush& brush);

/// Draws `image` unscaled with its top-left corner at `point`; a null image draws nothing.
void drawImage(Gdiplus::Graphics& graphics, Gdiplus::Image* image, PagePoint point);

void fillRect(Gdiplus::Graphics& graphics, PageRect rect, Argb colour);

/// Places a text horizontally and vertically relative to its point.
void setAlignment(Gdiplus::StringFormat& format,
                  Gdiplus::StringAlignment horizontal,
                  Gdiplus::StringAlignment vertical);

/// Whether nothing failed on these GDI+ objects since their statuses were last read, which reading resets.
template <typename... Objects>
bool allOk(const Objects&... objects) {
    // Not cut short: each status is to be read.
    return (static_cast<int>(objects.GetLastStatus() == Gdiplus::Ok) & ...) != 0;
}

inline Gdiplus::PointF toPointF(PagePoint point) {
    return {static_cast<float>(point.x), static_cast<float>(point.y)};
}
