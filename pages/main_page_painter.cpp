#include "pages/main_page_painter.h"

#include <bit>
#include <string>
#include <utility>

#include "framework/drawing/blend.h"
#include "framework/drawing/history_graph.h"
#include "pages/figure_texts.h"
#include "pages/main_page_layout.h"
#include "pages/main_page_memory.h"
#include "pages/page_drawing.h"
#include "pages/text_tools.h"
#include "stats/gamepad_battery_code.h"

namespace Layout = MainPageLayout;
using enum MainPageImage;

namespace {

struct GraphColours {
    Argb label;
    Argb level;
    Argb bar;
    Argb history;
};

constexpr GraphColours kCpuGraphColours{
    Palette::kCpuText, Palette::kCpuLevel, Palette::kMemoryBar, Palette::kCpuHistory};
constexpr GraphColours kGpuGraphColours{
    Palette::kGpuText, Palette::kGpuLevel, Palette::kGpuMemoryBar, Palette::kGpuHistory};

struct GraphReading {
    int value;
    int barValue;
    /// Add the value to the history.
    bool record;
};

void drawGraph(Gdiplus::Graphics& graphics,
               const wchar_t* label,
               PagePoint topLeft,
               const GraphColours& colours,
               const GraphReading& reading,
               std::list<std::int32_t>& history) {
    const Gdiplus::SolidBrush labelBrush{Gdiplus::Color(colours.label)};
    const Gdiplus::SolidBrush levelBrush{Gdiplus::Color(colours.level)};
    const Gdiplus::SolidBrush barBrush{Gdiplus::Color(colours.bar)};
    const Gdiplus::Pen historyPen(Gdiplus::Color(colours.history), 1.0F);
    const Panelix::HistoryGraph graph{
        .label = label,
        .labelBrush = &labelBrush,
        .areaBrush = &levelBrush,
        .barBrush = &barBrush,
        .linePen = &historyPen,
        .x = topLeft.x,
        .y = topLeft.y,
        .width = Layout::kGraphWidth,
        .barGap = Layout::kGraphBarGap,
        .barWidth = Layout::kGraphBarWidth,
        .value = reading.value,
        .barValue = reading.barValue,
    };
    Panelix::drawHistoryGraph(graphics, graph, history, reading.record);
}

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
        drawCpuGraph(histories.cpu, record);
        drawCpuTexts();
        if (view_.gpuAvailable) {
            drawGpu(histories.gpu, record);
        } else {
            drawMissingGpu();
        }
        drawMixer();
        drawIcons();
        drawClock();
        return allOk(graphics_, bitmap_, tools_.centred, tools_.rightBottom, tools_.topLeft) && blended_;
    }

private:
    void drawImageAt(MainPageImage image, PagePoint point) { drawImage(graphics_, images_[image], point); }

    void drawBackdrop() {
        if (memory_.backdrop.writeTo(bitmap_)) {
            return;
        }
        drawImageAt(Background, Layout::kFullScreen);
        if (Gdiplus::Bitmap* shade = images_[Shade]; shade != nullptr) {
            Panelix::blendImages(bitmap_, *shade, Panelix::BlendMode::Multiply);
            blended_ = allOk(*shade);
        }
        drawImageAt(Overlay, Layout::kFullScreen);
        memory_.backdrop.save(bitmap_, Panelix::kWholeLcd);
    }

    void drawMail() {
        if (view_.unreadMail <= 0) {
            return;
        }
        drawImageAt(Mail, Layout::kMailIcon);
        const Gdiplus::SolidBrush brush{Gdiplus::Color(Palette::kMailText)};
        drawText(graphics_,
                 mailCountText(view_.unreadMail),
                 tools_.large,
                 toPointF(Layout::kMailCount),
                 &tools_.topLeft,
                 brush);
    }

    void drawCpuGraph(std::list<std::int32_t>& history, bool record) {
        const GraphReading reading{view_.cpuLoad, view_.memoryLoad, record};
        drawGraph(graphics_, L"CPU", Layout::kCpuGraph, kCpuGraphColours, reading, history);
    }

    void drawDetail(const std::wstring& text, PagePoint point, const Gdiplus::Brush& brush) {
        drawText(graphics_, text, tools_.details, toPointF(point), nullptr, brush);
    }

    void drawCpuTexts() {
        const Gdiplus::SolidBrush brush{Gdiplus::Color(Palette::kCpuText)};
        if (!view_.coreTempAvailable) {
            drawDetail(L"Start CoreTemp!", Layout::kCpuName, brush);
            return;
        }
        drawDetail(view_.cpuName, Layout::kCpuName, brush);
        drawDetail(view_.cpuClockText, Layout::kCpuClock, brush);
        drawDetail(vidText(std::bit_cast<float>(view_.cpuVidBits)), Layout::kCpuVid, brush);
        drawText(graphics_,
                 cpuTemperatureText(view_.cpuTemperature, view_.cpuTempFahrenheit),
                 tools_.figures,
                 toPointF(Layout::kCpuTemperature),
                 &tools_.rightBottom,
                 brush);
    }

    void drawGpu(std::list<std::int32_t>& history, bool record) {
        const GpuStats& stats = view_.gpuStats;
        const Gdiplus::SolidBrush brush{Gdiplus::Color(Palette::kGpuText)};
        if (stats.loadValid) {
            const GraphReading reading{stats.load, stats.memoryLoad, record};
            drawGraph(graphics_, L"GPU", Layout::kGpuGraph, kGpuGraphColours, reading, history);
        }
        drawDetail(view_.gpuName, Layout::kGpuName, brush);
        if (stats.coreClockValid) {
            drawDetail(gpuClockText(stats.coreClock), Layout::kGpuClock, brush);
        }
        if (stats.temperatureValid) {
            drawText(graphics_,
                     gpuTemperatureText(stats.temperature),
                     tools_.figures,
                     toPointF(Layout::kGpuTemperature),
                     &tools_.rightBottom,
                     brush);
        }
        if (!isComplete(stats)) {
            const Gdiplus::SolidBrush errorBrush{Gdiplus::Color(Palette::kGpuErrorText)};
            drawDetail(L"Errors fetching some data\nfrom GPU", Layout::kGpuErrors, errorBrush);
        }
    }

    void drawMissingGpu() {
        const Gdiplus::SolidBrush brush{Gdiplus::Color(Palette::kGpuErrorText)};
        drawDetail(L"No supported discreet GPU\nfound", Layout::kGpuName, brush);
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
        drawVolumeBar(Layout::kLeftVolumeBarX, view_.leftVolume);
        drawVolumeBar(Layout::kRightVolumeBarX, view_.rightVolume);
    }

    void drawVolumeFigure(Argb colour) {
        const Gdiplus::SolidBrush brush{Gdiplus::Color(colour)};
        drawText(graphics_,
                 std::to_wstring(view_.volumeFigure),
                 tools_.large,
                 toPointF(Layout::kVolumeFigure),
                 &tools_.centred,
                 brush);
    }

    void drawVolumeBar(int x, int percent) {
        fillRect(graphics_, Layout::volumeBar(x, percent), Palette::kChannelVolume);
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

    void drawClock() {
        const Gdiplus::SolidBrush brush{Gdiplus::Color(Palette::kClockText)};
        drawText(
            graphics_, view_.clockText, tools_.figures, toPointF(Layout::kClock), &tools_.centred, brush);
    }

    Gdiplus::Graphics& graphics_;
    Gdiplus::Bitmap& bitmap_;
    const MainPageView& view_;
    const MainPageImages& images_;
    MainPageMemory& memory_;
    const TextTools tools_;
    bool blended_ = true;
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
