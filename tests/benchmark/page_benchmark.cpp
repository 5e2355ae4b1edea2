// Time of a whole frame of the main page (drawing, composing, conversion to an LCD frame), of one in which
// nothing has changed, and of its steps, each beside the same calls issued bare, in turns in one run; and the
// blocks that each frame takes from the C++ heap.

#include <windows.h>

#include <gdiplus.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
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
#include "tests/benchmark/figures.h"
#include "tests/pages/failing_allocations.h"
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

    Panelix::LcdFrame run(const std::wstring& clock) {
        drawBackdrop();
        drawStatistics(clock);
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

    Images images_;
    Gdiplus::Bitmap pageBitmap_{kWidth, kHeight, PixelFormat32bppPARGB};
    Gdiplus::Graphics page_{&pageBitmap_};
    Gdiplus::Bitmap surfaceBitmap_{kWidth, kHeight, PixelFormat32bppPARGB};
    Gdiplus::Graphics surface_{&surfaceBitmap_};
};

class Benchmark {
public:
    Benchmark() {
        auto page = std::make_unique<MainPage>(&app_, &sampler_, nullptr);
        page_ = page.get();
        app_.SetMainPage(std::move(page));
        setOrdinaryFigures(sampler_);
        sampler_.unreadMail = 3;
        sampler_.gamepadBattery = 5;
        for (int i = 0; i < kHistoryLength; ++i) {
            paint();
        }
        bare_ = std::make_unique<BarePass>(Images(canvas_));
        Gdiplus::Graphics(&previous_).Clear(Gdiplus::Color(0xFF304050));
    }

    /// False when the two do not draw the same.
    bool run() {
        for (int i = 0; i < kPasses; ++i) {
            comparePainted();
            compareUnchanged();
            compareSteps();
        }
        printPart("Drawing: the program's way against the same calls issued bare");
        painted_.print("painted frame of the main page", 1.05);
        const double share = unchanged_.programTime() / painted_.bareTime();
        printLine("unchanged frame, of the bare calls of a painted one",
                  numberText(share, 4),
                  limitText(share, 1.05, 2));
        unchanged_.print("the same, of asking for the time and copying alone");
        atRest_.print("composePages at rest", 1.03);
        inASlide_.print("composePages in a slide", 1.03);
        conversion_.print("toLcdFrame", 1.03);
        printPart("Blocks that the program takes from the C++ heap");
        printLine("painted frame", numberText(median(paintedBlocks_), 0));
        const double unchangedBlocks = median(unchangedBlocks_);
        printLine("unchanged frame", numberText(unchangedBlocks, 0), limitText(unchangedBlocks, 0, 0));
        // The clock may move on between the two drawings of a frame, but not often.
        const bool sameWork = equalFrames_ > kPasses / 2;
        printLine("frames that were equal, byte for byte",
                  std::to_string(equalFrames_) + " of " + std::to_string(kPasses),
                  sameWork ? "" : "the two do not draw the same, so the ratios say nothing");
        return sameWork;
    }

private:
    /// A reading is painted although its figures are those of the one before.
    void paint() {
        sampler_.dataReady = true;
        page_->Draw(&canvas_, {});
    }

    void composeAtRest() {
        canvas_.composePages(page_->bitmap(), nullptr, 0.0F, Panelix::TransitionKind::SlideFromBottom);
    }

    void comparePainted() {
        std::size_t blocks = 0;
        painted_.add(
            [&] {
                const std::size_t before = allocationsSoFar();
                paint();
                composeAtRest();
                frame_ = canvas_.toLcdFrame();
                blocks = allocationsSoFar() - before;
            },
            [&] { bareFrame_ = bare_->run(sampler_.dateTimeText()); });
        paintedBlocks_.push_back(static_cast<double>(blocks));
        equalFrames_ += std::memcmp(frame_.get(), bareFrame_.get(), Panelix::kLcdFrameBytes) == 0 ? 1 : 0;
    }

    void compareUnchanged() {
        // What was just painted; and both frames as warm as in a row of such passes.
        page_->Draw(&canvas_, {});
        handOver(bareFrame_);
        handOver(frame_);
        std::size_t blocks = 0;
        unchanged_.add(
            [&] {
                const std::size_t before = allocationsSoFar();
                page_->Draw(&canvas_, {});
                handOver(frame_);
                blocks = allocationsSoFar() - before;
            },
            [&] {
                sampler_.dateTimeText();
                handOver(frame_);
            });
        unchangedBlocks_.push_back(static_cast<double>(blocks));
    }

    void compareSteps() {
        atRest_.add([&] { composeAtRest(); }, [&] { bare_->compose(); });
        inASlide_.add(
            [&] {
                canvas_.composePages(
                    page_->bitmap(), &previous_, 0.5F, Panelix::TransitionKind::SlideFromBottom);
            },
            [&] { bare_->composeHalfASlide(&previous_); });
        conversion_.add([&] { frame_ = canvas_.toLcdFrame(); }, [&] { bareFrame_ = bare_->convert(); });
    }

    void handOver(const Panelix::LcdFrame& frame) {
        std::memcpy(handedOver_.data(), frame.get(), handedOver_.size());
    }

    BenchmarkApp app_;
    const Standins::LoadedCoreAudio audioClasses_;
    SystemInfo sampler_;
    Panelix::Canvas& canvas_ = *app_.canvas();
    MainPage* page_ = nullptr;
    std::unique_ptr<BarePass> bare_;
    Gdiplus::Bitmap previous_{kWidth, kHeight, PixelFormat32bppPARGB};

    Panelix::LcdFrame frame_;
    Panelix::LcdFrame bareFrame_;
    std::vector<std::uint8_t> handedOver_ = std::vector<std::uint8_t>(Panelix::kLcdFrameBytes);

    Comparison painted_;
    Comparison unchanged_;
    Comparison atRest_;
    Comparison inASlide_;
    Comparison conversion_;
    std::vector<double> paintedBlocks_;
    std::vector<double> unchangedBlocks_;
    int equalFrames_ = 0;
};

}  // namespace

int main() {
    // Apart from this machine's keyboard simulation and sound.
    Standins::useOwnSession();
    return Benchmark().run() ? 0 : 1;
}
