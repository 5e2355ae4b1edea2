#include "pages/page_drawing.h"

void drawText(Gdiplus::Graphics& graphics,
              const std::wstring& text,
              const Gdiplus::Font& font,
              const Gdiplus::PointF& point,
              const Gdiplus::StringFormat* format,
              const Gdiplus::Brush& brush) {
    const Gdiplus::RectF noBox(point.X, point.Y, 0.0F, 0.0F);
    graphics.DrawString(text.c_str(), -1, &font, noBox, format, &brush);
}

void drawImage(Gdiplus::Graphics& graphics, Gdiplus::Image* image, PagePoint point) {
    graphics.DrawImage(image, point.x, point.y);
}

void fillRect(Gdiplus::Graphics& graphics, PageRect rect, Argb colour) {
    const Gdiplus::SolidBrush brush{Gdiplus::Color(colour)};
    graphics.FillRectangle(&brush, rect.x, rect.y, rect.width, rect.height);
}

void setAlignment(Gdiplus::StringFormat& format,
                  Gdiplus::StringAlignment horizontal,
                  Gdiplus::StringAlignment vertical) {
    format.SetAlignment(horizontal);
    format.SetLineAlignment(vertical);
}
