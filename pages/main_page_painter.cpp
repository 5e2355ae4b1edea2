#include "pages/main_page_painter.h"

#include <bit>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "framework/drawing/blend.h"
#include "framework/drawing/history_graph.h"
#include "pages/figure_texts.h"
#include "pages/main_page_layout.h"
#include "pages/main_page_memory.h"
#include "pages/main_page_texts.h"
#include "pages/page_drawing.h"
#include "pages/text_tools.h"
#include "stats/gamepad_battery_code.h"

namespace Layout = MainPageLayout;
using enum MainPageImage;

namespace {

/// What the two graphs differ in.
struct GraphStyle {
    const wchar_t* label;
    MainPageText labelPlace;
    MainPageBar bar;
    PagePoint topLeft;
    Argb labelColour;
    Argb levelColour;
    Argb barColour;
    Argb historyColour;
};

constexpr GraphStyle kCpuGraph{L"CPU",
                               MainPageText::CpuLabel,
                               MainPageBar::Memory,
                               Layout::kCpuGraph,
                               Palette::kCpuText,
                               Palette::kCpuLevel,
                               Palette::kMemoryBar,
                               Palette::kCpuHistory};
constexpr GraphStyle kGpuGraph{L"GPU",
                               MainPageText::GpuLabel,
                               MainPageBar::GpuMemory,
                               Layout::kGpuGraph,
                               Palette::kGpuText,
                               Palette::kGpuLevel,
                               Palette::kGpuMemoryBar,
                               Palette::kGpuHistory};

bool isComplete(const GpuStats& stats) {
    return stats.loadValid && stats.temperatureValid && stats.memoryLoadValid && stats.coreClockValid;
}

/// One painting of the statistics.
class StatisticsPainting {
public:
    /// All are borrowed.
    StatisticsPainting(Gdiplus::Graphics& graphics,
                       Gdiplus::Bitmap& bitmap,
                       const MainPageView& view,
                       const MainPageImages& images,
                       MainPageMemory& memory)
        : graphics_(graphics),
          bitmap_(bitmap),
          view_(view),
          images_(images),
          memory_(memory) {}

    /// Whether every call of GDI+ went well.
    bool paint(MainPageHistories& histories, bool record) {
        drawBackdrop();
        drawMail();
        drawGraph(kCpuGraph, view_.cpuLoad, view_.memoryLoad, histories.cpu, record, memory_.cpuPlates);
        drawCpuTexts();
        if (view_.gpuAvailable) {
            drawGpu(histories.gpu, record);
        } else {
            drawMissingGpu();
        }
        drawMixer();
        drawIcons();
        drawClock();
        const bool formatted = !tools_ || tools_->allFormatsOk();
        return allOk(graphics_, bitmap_) && formatted && !failed_;
    }

private:
    void drawImageAt(MainPageImage image, PagePoint point) { drawImage(graphics_, images_[image], point); }

    void drawBackdrop() {
        backdropIsKept_ = memory_.backdrop.writeTo(bitmap_);
        if (backdropIsKept_) {
            return;
        }
        drawImageAt(Background, Layout::kFullScreen);
        if (Gdiplus::Bitmap* shade = images_[Shade]; shade != nullptr) {
            Panelix::blendImages(bitmap_, *shade, Panelix::BlendMode::Multiply);
            failed_ = !allOk(*shade);
        }
        drawImageAt(Overlay, Layout::kFullScreen);
        memory_.backdrop.save(bitmap_, Panelix::kWholeLcd);
    }

    void drawMail() {
        if (view_.unreadMail <= 0) {
            return;
        }
        drawImageAt(Mail, Layout::kMailIcon);
        drawText(MainPageText::MailCount, mailCountText(view_.unreadMail), Palette::kMailText);
    }

    void drawGraph(const GraphStyle& style,
                   int value,
                   int barValue,
                   std::list<std::int32_t>& history,
                   bool record,
                   std::optional<Panelix::GraphPlates>& plates) {
        const Gdiplus::SolidBrush labelBrush{Gdiplus::Color(style.labelColour)};
        const Gdiplus::SolidBrush levelBrush{Gdiplus::Color(style.levelColour)};
        const Gdiplus::SolidBrush barBrush{Gdiplus::Color(style.barColour)};
        const Gdiplus::Pen historyPen(Gdiplus::Color(style.historyColour), 1.0F);
        const Panelix::HistoryGraph graph{
            .label = style.label,
            .labelBrush = &labelBrush,
            .areaBrush = &levelBrush,
            .barBrush = &barBrush,
            .linePen = &historyPen,
            .x = style.topLeft.x,
            .y = style.topLeft.y,
            .width = Layout::kGraphWidth,
            .barGap = Layout::kGraphBarGap,
            .barWidth = Layout::kGraphBarWidth,
            .value = value,
            .barValue = barValue,
        };
        Panelix::addHistorySample(graph, history, record);
        makePlates(graph, plates);
        if (plates && plates->drawPlot(bitmap_, value, history)) {
            const int barX = graph.x + graph.width + graph.barGap;
            const int bottom = graph.y + Panelix::kPlotHeightPx;
            drawBar(style.bar, barValue, {barX, bottom - 1, graph.barWidth, 1}, [&] {
                Panelix::drawHistoryBar(graphics_, graph);
            });
            drawText(style.labelPlace, style.label, style.labelColour);
        } else {
            Panelix::drawHistoryGraph(graphics_, graph, history, false);
        }
    }

    /// The first painting does without: plates take as long as some paintings, and it is waited for.
    void makePlates(const Panelix::HistoryGraph& graph, std::optional<Panelix::GraphPlates>& plates) {
        if (!plates && backdropIsKept_) {
            plates = Panelix::GraphPlates::make(memory_.backdrop, graph);
            failed_ = failed_ || !plates;
        }
    }

    void drawCpuTexts() {
        constexpr Argb kColour = Palette::kCpuText;
        if (!view_.coreTempAvailable) {
            drawText(MainPageText::CpuName, L"Start CoreTemp!", kColour);
            return;
        }
        drawText(MainPageText::CpuName, view_.cpuName, kColour);
        drawText(MainPageText::CpuClock, view_.cpuClockText, kColour);
        drawText(MainPageText::CpuVid, vidText(std::bit_cast<float>(view_.cpuVidBits)), kColour);
        drawText(MainPageText::CpuTemperature,
                 cpuTemperatureText(view_.cpuTemperature, view_.cpuTempFahrenheit),
                 kColour);
    }

    void drawGpu(std::list<std::int32_t>& history, bool record) {
        constexpr Argb kColour = Palette::kGpuText;
        const GpuStats& stats = view_.gpuStats;
        if (stats.loadValid) {
            drawGraph(kGpuGraph, stats.load, stats.memoryLoad, history, record, memory_.gpuPlates);
        }
        drawText(MainPageText::GpuName, view_.gpuName, kColour);
        if (stats.coreClockValid) {
            drawText(MainPageText::GpuClock, gpuClockText(stats.coreClock), kColour);
        }
        if (stats.temperatureValid) {
            drawText(MainPageText::GpuTemperature, gpuTemperatureText(stats.temperature), kColour);
        }
        if (!isComplete(stats)) {
            drawText(MainPageText::GpuErrors, L"Errors fetching some data\nfrom GPU", Palette::kGpuErrorText);
        }
    }

    void drawMissingGpu() {
        drawText(MainPageText::GpuName, L"No supported discreet GPU\nfound", Palette::kGpuErrorText);
    }

    void drawMixer() {
        if (view_.selectedChannel == MixerChannel::None) {
            drawVolumeFigure(Palette::kMasterVolumeText);
        } else {
            fillRect(graphics_,
                     view_.selectedChannel == MixerChannel::Left ? Layout::kLeftChannelHighlight
                                                                 : Layout::kRightChannelHighlight,
                     Palette::kSelectedChannel);
            drawVolumeFigure(Palette::kChannelVolume);
        }
        drawVolumeBar(MainPageBar::LeftVolume, Layout::kLeftVolumeBarX, view_.leftVolume);
        drawVolumeBar(MainPageBar::RightVolume, Layout::kRightVolumeBarX, view_.rightVolume);
    }

    void drawVolumeFigure(Argb colour) {
        drawText(MainPageText::VolumeFigure, std::to_wstring(view_.volumeFigure), colour);
    }

    void drawVolumeBar(MainPageBar bar, int x, int percent) {
        drawBar(bar, percent, Layout::volumeBar(x, 1), [&] {
            fillRect(graphics_, Layout::volumeBar(x, percent), Palette::kChannelVolume);
        });
    }

    /// `onePercent` is the place of the lowest percent.
    template <typename Draw>
    void drawBar(MainPageBar bar, int percent, const PageRect& onePercent, const Draw& drawAnew) {
        constexpr int kFull = 100;
        if (percent < 0 || percent > kFull) {
            drawAnew();
            return;
        }
        // A full bar, and a pixel more on each side.
        const Panelix::PixelRect reach{
            onePercent.x - 1, onePercent.y - kFull, onePercent.width + 2, kFull + 2};
        RememberedDrawing& remembered = memory_.bars[static_cast<std::size_t>(bar)];
        remembered.draw(bitmap_, {}, static_cast<std::uint32_t>(percent), reach, drawAnew);
    }

    void drawIcons() {
        drawImageAt(view_.microphoneMuted ? MicrophoneMuted : MicrophoneOn, Layout::kMicrophoneIcon);
        drawImageAt(view_.speakerMuted ? SpeakerMuted : SpeakerOn, Layout::kSpeakerIcon);
        drawGamepadBattery();
    }

    void drawGamepadBattery() {
        switch (view_.gamepadBattery) {
            case kGamepadBatteryFull:
                drawImageAt(BatteryFull, Layout::kBatteryIcon);
                break;
            case kGamepadBatteryMedium:
                drawImageAt(BatteryMedium, Layout::kBatteryIcon);
                break;
            case kGamepadBatteryLow:
                drawImageAt(BatteryLow, Layout::kBatteryIcon);
                break;
            case kGamepadBatteryEmpty:
                drawImageAt(BatteryEmpty, Layout::kBatteryIcon);
                break;
            default:
                break;
        }
    }

    void drawClock() { drawText(MainPageText::Clock, view_.clockText, Palette::kClockText); }

    void drawText(MainPageText place, const std::wstring& text, Argb colour) {
        const MainPageTextStyle style = styleOf(place);
        RememberedDrawing& remembered = memory_.texts[static_cast<std::size_t>(place)];
        remembered.draw(bitmap_, text, colour, reachOf(style, text.size()), [&] {
            const TextTools& tools = textTools();
            const Gdiplus::SolidBrush brush{Gdiplus::Color(colour)};
            ::drawText(graphics_,
                       text,
                       tools.font(style.font),
                       toPointF(style.point),
                       tools.format(style.anchor),
                       brush);
        });
    }

    const TextTools& textTools() { return tools_ ? *tools_ : tools_.emplace(); }

    Gdiplus::Graphics& graphics_;
    Gdiplus::Bitmap& bitmap_;
    const MainPageView& view_;
    const MainPageImages& images_;
    MainPageMemory& memory_;
    /// Made for the first text that is not remembered.
    std::optional<TextTools> tools_;
    /// The backdrop of an earlier painting is under this one.
    bool backdropIsKept_ = false;
    /// A call has failed on an object that is gone or not asked at the end.
    bool failed_ = false;
};

}  // namespace

MainPagePainter::MainPagePainter() = default;
MainPagePainter::~MainPagePainter() = default;

void MainPagePainter::setImages(const MainPageImages& images) {
    images_ = images;
    forget();
}

void MainPagePainter::forget() {
    memory_.reset();
    isPainted_ = false;
}

bool MainPagePainter::paint(Gdiplus::Graphics& graphics,
                            Gdiplus::Bitmap& bitmap,
                            const MainPageView& view,
                            bool record) {
    // An exception or a failed call may leave half a painting and half a memory: both count when all is done.
    std::unique_ptr<MainPageMemory> memory = std::move(memory_);
    forget();
    if (memory == nullptr) {
        memory = std::make_unique<MainPageMemory>();
    }
    bool painted = false;
    if (view.pictureMode) {
        drawImage(graphics, images_[Picture], Layout::kFullScreen);
        painted = allOk(graphics, bitmap);
    } else {
        painted = StatisticsPainting(graphics, bitmap, view, images_, *memory).paint(histories_, record);
    }
    if (painted) {
        painted_ = view;
        isPainted_ = true;
        memory_ = std::move(memory);
    }
    return painted;
}
