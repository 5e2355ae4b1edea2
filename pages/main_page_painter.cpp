#include "pages/main_page_painter.h"

#include <bit>
#include <string>

#include "framework/drawing/blend.h"
#include "framework/drawing/history_graph.h"
#include "pages/figure_texts.h"
#include "pages/main_page_layout.h"
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
    StatisticsPainting(Gdiplus::Graphics& graphics, const MainPageView& view, const MainPageImages& images)
        : graphics_(graphics),
          view_(view),
          images_(images) {}

    /// Whether every call of GDI+ went well.
    bool paint(Gdiplus::Bitmap& bitmap, MainPageHistories& histories, bool record) {
        const bool blended = drawBackdrop(bitmap);
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
        return allOk(graphics_, tools_.centred, tools_.rightBottom, tools_.topLeft) && blended;
    }

private:
    void drawImageAt(MainPageImage image, PagePoint point) { drawImage(graphics_, images_[image], point); }

    bool drawBackdrop(Gdiplus::Bitmap& bitmap) {
        drawImageAt(Background, Layout::kFullScreen);
        bool blended = true;
        if (Gdiplus::Bitmap* shade = images_[Shade]; shade != nullptr) {
            Panelix::blendImages(bitmap, *shade, Panelix::BlendMode::Multiply);
            blended = allOk(bitmap, *shade);
        }
        drawImageAt(Overlay, Layout::kFullScreen);
        return blended;
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
    const MainPageView& view_;
    const MainPageImages& images_;
    const TextTools tools_;
};

}  // namespace

bool paintMainPage(Gdiplus::Graphics& graphics,
                   Gdiplus::Bitmap& bitmap,
                   const MainPageView& view,
                   const MainPageImages& images,
                   MainPageHistories& histories,
                   bool record) {
    if (view.pictureMode) {
        drawImage(graphics, images[Picture], Layout::kFullScreen);
        return allOk(graphics);
    }
    return StatisticsPainting(graphics, view, images).paint(bitmap, histories, record);
}
