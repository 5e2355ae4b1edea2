#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "framework/drawing/canvas.h"
#include "framework/drawing/pixel_blend.h"

// A frame of the main page as plain calls of GDI+, which decide nothing and keep nothing.

inline constexpr int kHistoryLength = 201;
inline constexpr int kWidth = 320;
inline constexpr int kHeight = 240;

/// The images of the page, in the order in which a drawing needs them.
struct Images {
    explicit Images(Panelix::Canvas& canvas)
        : background(canvas.getImage(108, 0)),
          shade(canvas.getImage(107, 0)),
          overlay(canvas.getImage(106, 1)),
          mail(canvas.getImage(104, 0)),
          microphone(canvas.getImage(130, 1)),
          speaker(canvas.getImage(131, 1)),
          battery(canvas.getImage(133, 1)) {}

    Gdiplus::Bitmap* background;
    Gdiplus::Bitmap* shade;
    Gdiplus::Bitmap* overlay;
    Gdiplus::Bitmap* mail;
    Gdiplus::Bitmap* microphone;
    Gdiplus::Bitmap* speaker;
    Gdiplus::Bitmap* battery;
};

inline void setFast(Gdiplus::Graphics& graphics) {
    graphics.SetCompositingMode(Gdiplus::CompositingModeSourceOver);
    graphics.SetCompositingQuality(Gdiplus::CompositingQualityHighSpeed);
    graphics.SetPixelOffsetMode(Gdiplus::PixelOffsetModeNone);
    graphics.SetSmoothingMode(Gdiplus::SmoothingModeNone);
    graphics.SetInterpolationMode(Gdiplus::InterpolationModeDefault);
}

/// What of a frame changes from reading to reading.
struct Figures {
    int cpuLoad = 37;
    int memoryLoad = 62;
    int gpuLoad = 48;
    int gpuMemoryLoad = 33;
    std::wstring cpuClock = L"3600.00MHz (100.00 x 36.00)";
    std::wstring cpuVid = L"1.250000v";
    std::wstring cpuTemperature = L"54 \u00B0C";
    std::wstring gpuClock = L"1350.00 MHz";
    std::wstring gpuTemperature = L"61 \u00B0C";
    /// Newest first.
    std::deque<int> cpuHistory = std::deque<int>(kHistoryLength, 37);
    std::deque<int> gpuHistory = std::deque<int>(kHistoryLength, 48);
};

/// The calls of one pass in a row, with ready figures in place of everything that is decided.
class BarePass {
public:
    explicit BarePass(const Images& images) : images_(images) {
        setFast(page_);
        setFast(surface_);
    }

    Panelix::LcdFrame run(const std::wstring& clock, const Figures& figures) {
        drawBackdrop();
        drawStatistics(clock, figures);
        compose();
        return convert();
    }

    void compose() { surface_.DrawImage(&pageBitmap_, 0, 0); }

    void composeHalfASlide(Gdiplus::Bitmap* previous) {
        surface_.DrawImage(previous, 0, -kHeight / 2);
        surface_.DrawImage(&pageBitmap_, 0, kHeight / 2);
    }

    Panelix::LcdFrame convert() {
        const HDC screen = GetDC(nullptr);
        HBITMAP bitmap = nullptr;
        surfaceBitmap_.GetHBITMAP(Gdiplus::Color(0, 0, 0, 0), &bitmap);
        struct {
            BITMAPINFOHEADER header;
            std::array<RGBQUAD, 256> colours;
        } info{};
        info.header.biSize = sizeof(info.header);
        auto* const bitmapInfo = reinterpret_cast<BITMAPINFO*>(&info);
        GetDIBits(screen, bitmap, 0, 0, nullptr, bitmapInfo, DIB_RGB_COLORS);
        info.header.biCompression = BI_RGB;
        info.header.biHeight = -kHeight;
        Panelix::LcdFrame frame = std::make_unique_for_overwrite<std::uint8_t[]>(Panelix::kLcdFrameBytes);
        GetDIBits(screen, bitmap, 0, kHeight, frame.get(), bitmapInfo, DIB_RGB_COLORS);
        DeleteObject(bitmap);
        ReleaseDC(nullptr, screen);
        return frame;
    }

private:
    void drawBackdrop() {
        page_.DrawImage(images_.background, 0, 0);
        const Gdiplus::Rect all(0, 0, kWidth, kHeight);
        Gdiplus::BitmapData to{};
        Gdiplus::BitmapData from{};
        pageBitmap_.LockBits(
            &all, Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeWrite, PixelFormat32bppPARGB, &to);
        images_.shade->LockBits(&all, Gdiplus::ImageLockModeRead, PixelFormat32bppPARGB, &from);
        Panelix::blendPixels(static_cast<std::uint32_t*>(to.Scan0),
                             static_cast<const std::uint32_t*>(from.Scan0),
                             std::size_t{kWidth} * kHeight,
                             Panelix::BlendMode::Multiply);
        pageBitmap_.UnlockBits(&to);
        images_.shade->UnlockBits(&from);
        page_.DrawImage(images_.overlay, 0, 0);
    }

    void drawGraph(int y,
                   int value,
                   int barValue,
                   const std::deque<int>& history,
                   const std::array<Gdiplus::ARGB, 4>& colours,
                   const wchar_t* label) {
        const Gdiplus::SolidBrush labelBrush{Gdiplus::Color(colours[0])};
        const Gdiplus::SolidBrush levelBrush{Gdiplus::Color(colours[1])};
        const Gdiplus::SolidBrush barBrush{Gdiplus::Color(colours[2])};
        const Gdiplus::Pen pen(Gdiplus::Color(colours[3]), 1.0F);
        page_.FillRectangle(&levelBrush, 4, y + 100 - value, kHistoryLength, value);
        page_.FillRectangle(&barBrush, 209, y + 100 - barValue, 18, barValue);
        int x = 204;
        for (const int sample : history) {
            page_.DrawLine(&pen, x, y + 99, x, y + 99 - sample);
            --x;
        }
        const Gdiplus::FontFamily family(L"Arial");
        const Gdiplus::Font font(&family, 15.0F, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
        text(label, font, 6.0F, static_cast<float>(y + 81), nullptr, labelBrush);
    }

    void text(const wchar_t* what,
              const Gdiplus::Font& font,
              float x,
              float y,
              const Gdiplus::StringFormat* format,
              const Gdiplus::Brush& brush) {
        page_.DrawString(what, -1, &font, Gdiplus::RectF(x, y, 0.0F, 0.0F), format, &brush);
    }

    void drawStatistics(const std::wstring& clock, const Figures& shown) {
        const Gdiplus::FontFamily family(L"Arial");
        const Gdiplus::Font figures(&family, 20.0F, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
        const Gdiplus::Font details(&family, 15.0F, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
        const Gdiplus::Font large(&family, 24.0F, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
        Gdiplus::StringFormat centred;
        centred.SetAlignment(Gdiplus::StringAlignmentCenter);
        centred.SetLineAlignment(Gdiplus::StringAlignmentCenter);
        Gdiplus::StringFormat rightBottom;
        rightBottom.SetAlignment(Gdiplus::StringAlignmentFar);
        rightBottom.SetLineAlignment(Gdiplus::StringAlignmentFar);
        Gdiplus::StringFormat topLeft;
        topLeft.SetAlignment(Gdiplus::StringAlignmentNear);
        topLeft.SetLineAlignment(Gdiplus::StringAlignmentNear);

        page_.DrawImage(images_.mail, 235, 155);
        const Gdiplus::SolidBrush mail(Gdiplus::Color(0xFF005DAF));
        text(L"x3", large, 270.0F, 154.0F, &topLeft, mail);

        drawGraph(4,
                  shown.cpuLoad,
                  shown.memoryLoad,
                  shown.cpuHistory,
                  {0xFF00C8C8, 0x64FF0000, 0xC8FF3C00, 0x96FF0000},
                  L"CPU");
        const Gdiplus::SolidBrush cpu(Gdiplus::Color(0xFF00C8C8));
        text(L"Core i7-8700K @ 3.70GHz", details, 4.0F, 6.0F, nullptr, cpu);
        text(shown.cpuClock.c_str(), details, 4.0F, 26.0F, nullptr, cpu);
        text(shown.cpuVid.c_str(), details, 4.0F, 46.0F, nullptr, cpu);
        text(shown.cpuTemperature.c_str(), figures, 205.0F, 106.0F, &rightBottom, cpu);

        const Gdiplus::SolidBrush gpu(Gdiplus::Color(0xFF32C864));
        drawGraph(109,
                  shown.gpuLoad,
                  shown.gpuMemoryLoad,
                  shown.gpuHistory,
                  {0xFF32C864, 0x64006FF0, 0xC8008BC1, 0x96006FF0},
                  L"GPU");
        text(L"GeForce GTX 1080", details, 4.0F, 113.0F, nullptr, gpu);
        text(shown.gpuClock.c_str(), details, 4.0F, 133.0F, nullptr, gpu);
        text(shown.gpuTemperature.c_str(), figures, 205.0F, 210.0F, &rightBottom, gpu);

        const Gdiplus::SolidBrush master(Gdiplus::Color(0xFF000000));
        text(L"50", large, 253.0F, 48.0F, &centred, master);
        const Gdiplus::SolidBrush left(Gdiplus::Color(0xC8225D80));
        page_.FillRectangle(&left, 280, 62, 17, 42);
        const Gdiplus::SolidBrush right(Gdiplus::Color(0xC8225D80));
        page_.FillRectangle(&right, 300, 46, 17, 58);

        page_.DrawImage(images_.microphone, 232, 112);
        page_.DrawImage(images_.speaker, 256, 112);
        page_.DrawImage(images_.battery, 274, 112);
        const Gdiplus::SolidBrush white(Gdiplus::Color(0xFFFFFFFF));
        text(clock.c_str(), figures, 160.0F, 225.0F, &centred, white);
    }

    Images images_;
    Gdiplus::Bitmap pageBitmap_{kWidth, kHeight, PixelFormat32bppPARGB};
    Gdiplus::Graphics page_{&pageBitmap_};
    Gdiplus::Bitmap surfaceBitmap_{kWidth, kHeight, PixelFormat32bppPARGB};
    Gdiplus::Graphics surface_{&surfaceBitmap_};
};
