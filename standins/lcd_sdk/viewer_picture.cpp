#include "standins/lcd_sdk/viewer_picture.h"

#include <gdiplus.h>

#include "standins/lcd_sdk/viewer_layout.h"

namespace Standins {

namespace {

namespace LcdSdk = Panelix::LcdSdk;

// Opaque colours but for the veil.
constexpr Gdiplus::ARGB kCaseArgb = 0xFF24272C;
constexpr Gdiplus::ARGB kBezelArgb = 0xFF0B0C0E;
constexpr Gdiplus::ARGB kButtonArgb = 0xFF3A3F47;
constexpr Gdiplus::ARGB kButtonDownArgb = 0xFF2F81D6;
constexpr Gdiplus::ARGB kButtonEdgeArgb = 0xFF565D68;
constexpr Gdiplus::ARGB kLabelArgb = 0xFFF2F4F7;
constexpr Gdiplus::ARGB kKeyLabelArgb = 0xFFB4BCC8;
constexpr Gdiplus::ARGB kWaitingArgb = 0xFF101A26;
constexpr Gdiplus::ARGB kVeilArgb = 0xA0000000;

constexpr int kBezelPx = 10;
constexpr int kCornerPx = 8;
constexpr int kArrowPx = 9;

void fillRounded(
    Gdiplus::Graphics& graphics, const ViewerRect& rect, int radius, Gdiplus::ARGB fill, Gdiplus::ARGB edge) {
    const int size = radius * 2;
    const int right = rect.x + rect.width - 1 - size;
    const int bottom = rect.y + rect.height - 1 - size;
    Gdiplus::GraphicsPath path;
    path.AddArc(rect.x, rect.y, size, size, 180, 90);
    path.AddArc(right, rect.y, size, size, 270, 90);
    path.AddArc(right, bottom, size, size, 0, 90);
    path.AddArc(rect.x, bottom, size, size, 90, 90);
    path.CloseFigure();
    const Gdiplus::SolidBrush brush{Gdiplus::Color(fill)};
    const Gdiplus::Pen pen{Gdiplus::Color(edge)};
    graphics.FillPath(&brush, &path);
    graphics.DrawPath(&pen, &path);
}

void drawCentred(Gdiplus::Graphics& graphics,
                 const std::wstring& text,
                 const ViewerRect& rect,
                 float sizePx,
                 Gdiplus::ARGB argb) {
    const Gdiplus::FontFamily family(L"Arial");
    const Gdiplus::Font font(&family, sizePx, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
    const Gdiplus::SolidBrush brush{Gdiplus::Color(argb)};
    Gdiplus::StringFormat format;
    format.SetAlignment(Gdiplus::StringAlignmentCenter);
    format.SetLineAlignment(Gdiplus::StringAlignmentCenter);
    const Gdiplus::RectF box(static_cast<float>(rect.x),
                             static_cast<float>(rect.y),
                             static_cast<float>(rect.width),
                             static_cast<float>(rect.height));
    graphics.DrawString(text.c_str(), -1, &font, box, &format, &brush);
}

void drawArrow(Gdiplus::Graphics& graphics, const ViewerButton& button) {
    // Along the arrow and across it.
    int dx = 0;
    int dy = 0;
    switch (button.mask) {
        case LcdSdk::kButtonUp:
            dy = -kArrowPx;
            break;
        case LcdSdk::kButtonDown:
            dy = kArrowPx;
            break;
        case LcdSdk::kButtonLeft:
            dx = -kArrowPx;
            break;
        default:
            dx = kArrowPx;
            break;
    }
    const int x = button.rect.x + button.rect.width / 2;
    const int y = button.rect.y + button.rect.height / 2;
    const Gdiplus::Point corners[] = {
        {x + dx, y + dy}, {x - dx + dy, y - dy + dx}, {x - dx - dy, y - dy - dx}};
    const Gdiplus::SolidBrush brush{Gdiplus::Color(kLabelArgb)};
    graphics.FillPolygon(&brush, corners, 3);
}

void drawButton(Gdiplus::Graphics& graphics, const ViewerButton& button, bool isDown) {
    const ViewerRect& rect = button.rect;
    fillRounded(graphics, rect, kCornerPx, isDown ? kButtonDownArgb : kButtonArgb, kButtonEdgeArgb);
    if (*button.label == L'\0') {
        drawArrow(graphics, button);
        return;
    }
    constexpr int kLabelHeight = 30;
    drawCentred(graphics, button.label, {rect.x, rect.y + 3, rect.width, kLabelHeight}, 17, kLabelArgb);
    drawCentred(graphics,
                button.keyLabel,
                {rect.x, rect.y + kLabelHeight - 2, rect.width, rect.height - kLabelHeight},
                12,
                isDown ? kLabelArgb : kKeyLabelArgb);
}

// Each pixel of the LCD becomes a square of four, unfiltered, so that the viewer shows what was drawn.
void drawFrame(HDC dc, const G19Frame& frame) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = LcdSdk::kColorWidth;
    info.bmiHeader.biHeight = -LcdSdk::kColorHeight;  // rows from top to bottom
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    SetStretchBltMode(dc, COLORONCOLOR);
    StretchDIBits(dc,
                  kLcdRect.x,
                  kLcdRect.y,
                  kLcdRect.width,
                  kLcdRect.height,
                  0,
                  0,
                  LcdSdk::kColorWidth,
                  LcdSdk::kColorHeight,
                  frame.pixels.data(),
                  &info,
                  DIB_RGB_COLORS,
                  SRCCOPY);
}

void fillLcd(Gdiplus::Graphics& graphics, Gdiplus::ARGB argb) {
    const Gdiplus::SolidBrush brush{Gdiplus::Color(argb)};
    graphics.FillRectangle(&brush, kLcdRect.x, kLcdRect.y, kLcdRect.width, kLcdRect.height);
}

void drawMessage(Gdiplus::Graphics& graphics, const std::wstring& title, const std::wstring& hint) {
    constexpr int kTitleHeight = 48;
    const int middle = kLcdRect.y + kLcdRect.height / 2;
    drawCentred(
        graphics, title, {kLcdRect.x, middle - kTitleHeight, kLcdRect.width, kTitleHeight}, 32, kLabelArgb);
    drawCentred(graphics, hint, {kLcdRect.x, middle + 6, kLcdRect.width, 28}, 17, kKeyLabelArgb);
}

}  // namespace

void paintViewer(HDC dc, const ViewerState& state) {
    Gdiplus::Graphics graphics(dc);
    graphics.SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
    graphics.SetTextRenderingHint(Gdiplus::TextRenderingHintAntiAlias);
    graphics.Clear(Gdiplus::Color(kCaseArgb));
    fillRounded(graphics,
                {kLcdRect.x - kBezelPx,
                 kLcdRect.y - kBezelPx,
                 kLcdRect.width + 2 * kBezelPx,
                 kLcdRect.height + 2 * kBezelPx},
                kCornerPx,
                kBezelArgb,
                kBezelArgb);
    for (const ViewerButton& button : kViewerButtons) {
        drawButton(graphics, button, (state.buttonsDown & button.mask) != 0);
    }
    // GDI draws the frame between GDI+ calls on the same device context: what GDI+ still holds goes out
    // first.
    graphics.Flush(Gdiplus::FlushIntentionSync);
    if (state.frame.has_value()) {
        drawFrame(dc, *state.frame);
    } else {
        fillLcd(graphics, kWaitingArgb);
    }
    const std::wstring name = state.programName.empty() ? L"Kelvaro" : state.programName;
    if (state.ended) {
        fillLcd(graphics, kVeilArgb);
        drawMessage(graphics, name + L" has ended", L"Start it again, or close this window.");
    } else if (!state.frame.has_value()) {
        drawMessage(graphics, L"Waiting for Kelvaro", L"Its picture appears here as soon as it runs.");
    }
}

}  // namespace Standins
