// Time of a whole pass of the main page (drawing, composing, conversion to an LCD frame), and of one in which
// nothing has changed, each beside the same calls issued bare. Prints the medians and their ratios, measured
// alternately in one run.

#include <windows.h>

#include <gdiplus.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "framework/core/app.h"
#include "framework/drawing/canvas.h"
#include "framework/drawing/pixel_blend.h"
#include "pages/main_page.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/shared_record.h"
#include "stats/system_info.h"
#include "tests/pages/sample_snapshot.h"

namespace {

constexpr int kPasses = 400;
constexpr int kHistoryLength = 201;
constexpr int kWidth = 320;
constexpr int kHeight = 240;

class BenchmarkApp : public Panelix::App {
public:
    BenchmarkApp() : App(GetModuleHandleW(nullptr), L"Benchmark", IDI_APPLICATION, 66) {}
    void HandleCommand(std::uint32_t) override {}
};

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

void setFast(Gdiplus::Graphics& graphics) {
    graphics.SetCompositingMode(Gdiplus::CompositingModeSourceOver);
    graphics.SetCompositingQuality(Gdiplus::CompositingQualityHighSpeed);
    graphics.SetPixelOffsetMode(Gdiplus::PixelOffsetModeNone);
    graphics.SetSmoothingMode(Gdiplus::SmoothingModeNone);
    graphics.SetInterpolationMode(Gdiplus::InterpolationModeDefault);
}

/// The calls of one pass in a row, with the page's own figures in place of everything that is decided.
class BarePass {
public:
    explicit BarePass(const Images& images) : images_(images) {
        setFast(page_);
        setFast(surface_);
    }

    std::vector<std::uint8_t> run(const std::wstring& clock) {
        drawBackdrop();
        drawStatistics(clock);
        surface_.DrawImage(&pageBitmap_, 0, 0);
        return convert();
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

    void drawGraph(
        int y, int value, int barValue, const std::array<Gdiplus::ARGB, 4>& colours, const wchar_t* label) {
        const Gdiplus::SolidBrush labelBrush{Gdiplus::Color(colours[0])};
        const Gdiplus::SolidBrush levelBrush{Gdiplus::Color(colours[1])};
        const Gdiplus::SolidBrush barBrush{Gdiplus::Color(colours[2])};
        const Gdiplus::Pen pen(Gdiplus::Color(colours[3]), 1.0F);
        page_.FillRectangle(&levelBrush, 4, y + 100 - value, kHistoryLength, value);
        page_.FillRectangle(&barBrush, 209, y + 100 - barValue, 18, barValue);
        for (int x = 204; x > 204 - kHistoryLength; --x) {
            page_.DrawLine(&pen, x, y + 99, x, y + 99 - value);
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

    void drawStatistics(const std::wstring& clock) {
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

        drawGraph(4, 37, 62, {0xFF00C8C8, 0x64FF0000, 0xC8FF3C00, 0x96FF0000}, L"CPU");
        const Gdiplus::SolidBrush cpu(Gdiplus::Color(0xFF00C8C8));
        text(L"Core i7-8700K @ 3.70GHz", details, 4.0F, 6.0F, nullptr, cpu);
        text(L"3600.00MHz (100.00 x 36.00)", details, 4.0F, 26.0F, nullptr, cpu);
        text(L"1.250000v", details, 4.0F, 46.0F, nullptr, cpu);
        text(L"54 \u00B0C", figures, 205.0F, 106.0F, &rightBottom, cpu);

        const Gdiplus::SolidBrush gpu(Gdiplus::Color(0xFF32C864));
        drawGraph(109, 48, 33, {0xFF32C864, 0x64006FF0, 0xC8008BC1, 0x96006FF0}, L"GPU");
        text(L"GeForce GTX 1080", details, 4.0F, 113.0F, nullptr, gpu);
        text(L"1350.00 MHz", details, 4.0F, 133.0F, nullptr, gpu);
        text(L"61 \u00B0C", figures, 205.0F, 210.0F, &rightBottom, gpu);

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

    std::vector<std::uint8_t> convert() {
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
        std::vector<std::uint8_t> frame(Panelix::kLcdFrameBytes);
        GetDIBits(screen, bitmap, 0, kHeight, frame.data(), bitmapInfo, DIB_RGB_COLORS);
        DeleteObject(bitmap);
        ReleaseDC(nullptr, screen);
        return frame;
    }

    Images images_;
    Gdiplus::Bitmap pageBitmap_{kWidth, kHeight, PixelFormat32bppPARGB};
    Gdiplus::Graphics page_{&pageBitmap_};
    Gdiplus::Bitmap surfaceBitmap_{kWidth, kHeight, PixelFormat32bppPARGB};
    Gdiplus::Graphics surface_{&surfaceBitmap_};
};

double microseconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

int run() {
    // Apart from this machine's keyboard simulation and sound.
    Standins::useOwnSession();
    BenchmarkApp app;
    const Standins::LoadedCoreAudio audioClasses;
    SystemInfo sampler;
    auto owned = std::make_unique<MainPage>(&app, &sampler, nullptr);
    MainPage& page = *owned;
    app.SetMainPage(std::move(owned));
    Panelix::Canvas& canvas = *app.canvas();
    setOrdinaryFigures(sampler);
    sampler.unreadMail = 3;
    sampler.gamepadBattery = 5;
    for (int i = 0; i < kHistoryLength; ++i) {
        sampler.dataReady = true;
        page.Draw(&canvas, {});
    }

    BarePass bare{Images(canvas)};
    Panelix::LcdFrame pageFrame;
    std::vector<std::uint8_t> bareFrame;
    std::vector<double> pageTimes;
    std::vector<double> bareTimes;
    std::vector<double> unchangedTimes;
    std::vector<double> bareUnchangedTimes;
    std::vector<std::uint8_t> handedOver(Panelix::kLcdFrameBytes);
    std::wstring clock;
    int equalFrames = 0;
    for (int i = 0; i < kPasses; ++i) {
        // A reading is painted although its figures are those of the one before.
        sampler.dataReady = true;
        pageTimes.push_back(microseconds([&] {
            page.Draw(&canvas, {});
            canvas.composePages(page.bitmap(), nullptr, 0.0F, Panelix::TransitionKind::SlideFromBottom);
            pageFrame = canvas.toLcdFrame();
        }));
        bareTimes.push_back(microseconds([&] { bareFrame = bare.run(sampler.dateTimeText()); }));
        unchangedTimes.push_back(microseconds([&] {
            page.Draw(&canvas, {});
            std::memcpy(handedOver.data(), pageFrame.get(), handedOver.size());
        }));
        bareUnchangedTimes.push_back(microseconds([&] {
            clock = sampler.dateTimeText();
            std::memcpy(handedOver.data(), bareFrame.data(), handedOver.size());
        }));
        equalFrames += std::memcmp(pageFrame.get(), bareFrame.data(), bareFrame.size()) == 0 ? 1 : 0;
    }
    std::printf("main page, %d passes: %.0f us with the program, %.0f us bare, ratio %.3f\n",
                kPasses,
                median(pageTimes),
                median(bareTimes),
                median(pageTimes) / median(bareTimes));
    std::printf("without a change: %.0f us with the program, %.0f us bare, %.3f of a pass that paints\n",
                median(unchangedTimes),
                median(bareUnchangedTimes),
                median(unchangedTimes) / median(pageTimes));
    // The clock may have moved on between the two drawings of a pass, but not often.
    const bool sameWork = equalFrames > kPasses / 2;
    std::printf("%d of %d frames are equal%s\n",
                equalFrames,
                kPasses,
                sameWork ? "" : ": the two do not draw the same, so the ratio says nothing");
    return sameWork ? 0 : 1;
}

}  // namespace

int main() {
    return run();
}
