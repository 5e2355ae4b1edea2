#include "pages/main_page.h"

#include <algorithm>
#include <cstdint>
#include <tuple>

#include "framework/core/app.h"
#include "framework/drawing/blend.h"
#include "framework/drawing/canvas.h"
#include "framework/drawing/history_graph.h"
#include "pages/figure_texts.h"
#include "pages/image_ids.h"
#include "pages/main_page_layout.h"
#include "pages/page_drawing.h"
#include "pages/page_names.h"
#include "pages/text_tools.h"
#include "stats/gamepad_battery_code.h"
#include "stats/system_info.h"

using Panelix::LcdButton;
using Panelix::TransitionKind;
namespace Layout = MainPageLayout;

namespace {

struct ImageResource {
    std::uintptr_t id;
    int fromPng;
};

// In the order of MainPage::ImageName, which is the order of loading.
constexpr std::array<ImageResource, 13> kImageResources{{
    {IDB_BACKGROUND, 0},
    {IDB_MAIL, 0},
    {IDB_PICTURE, 0},
    {IDB_SHADE, 0},
    {IDP_OVERLAY, 1},
    {IDP_MICROPHONE_ON, 1},
    {IDP_MICROPHONE_MUTED, 1},
    {IDP_SPEAKER_ON, 1},
    {IDP_SPEAKER_MUTED, 1},
    {IDP_BATTERY_FULL, 1},
    {IDP_BATTERY_MEDIUM, 1},
    {IDP_BATTERY_LOW, 1},
    {IDP_BATTERY_EMPTY, 1},
}};

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

}  // namespace

MainPage::MainPage(Panelix::App* app, SystemInfo* sampler, Panelix::Page* menuPage)
    : Page(kMainPageName, app),
      sampler_(sampler),
      menuPage_(menuPage),
      mixer_(sampler) {}

void MainPage::Init(Panelix::Canvas* canvas) {
    static_assert(std::tuple_size_v<decltype(images_)> == kImageResources.size());
    std::ranges::transform(kImageResources, images_.begin(), [canvas](const ImageResource& resource) {
        return canvas->getImage(resource.id, resource.fromPng);
    });
}

bool MainPage::Update(bool /*isActive*/, const Panelix::LcdButtons& /*buttons*/) {
    blink_.advance();
    sampler_->tick();
    return true;
}

void MainPage::Draw(Panelix::Canvas* canvas, const Panelix::LcdButtons& buttons) {
    if (buttons.isPressed(LcdButton::Menu)) {
        app()->SwitchPage(menuPage_, TransitionKind::SlideFromBottom);
        return;
    }
    if (buttons.isPressed(LcdButton::Ok)) {
        pictureMode_ = !pictureMode_;
    }
    if (pictureMode_) {
        drawImageAt(ImageName::Picture, Layout::kFullScreen);
    } else {
        drawStatistics(*canvas, buttons);
    }
    sampler_->dataReady = false;
}

void MainPage::drawStatistics(Panelix::Canvas& canvas, const Panelix::LcdButtons& buttons) {
    const TextTools tools;
    drawBackdrop();
    drawMail(tools);
    drawCpuGraph();
    drawCpuTexts(tools);
    if (sampler_->gpuAvailable) {
        drawGpu(tools);
    } else {
        drawMissingGpu(tools);
    }
    const bool screenshotWanted = mixer_.draw(*graphics(), tools, buttons);
    drawIcons();
    drawClock(tools);
    if (screenshotWanted) {
        // What is saved is the last frame composed: this drawing of the page is not on the canvas yet.
        canvas.saveScreenshot();
        // The time of an error box must not count as the pass's own.
        app()->requestFullWait();
    }
}

void MainPage::drawImageAt(ImageName name, PagePoint point) {
    drawImage(*graphics(), image(name), point);
}

void MainPage::drawBackdrop() {
    drawImageAt(ImageName::Background, Layout::kFullScreen);
    if (Gdiplus::Bitmap* shade = image(ImageName::Shade); shade != nullptr) {
        Panelix::blendImages(*bitmap(), *shade, Panelix::BlendMode::Multiply);
    }
    drawImageAt(ImageName::Overlay, Layout::kFullScreen);
}

void MainPage::drawMail(const TextTools& tools) {
    if (sampler_->unreadMail <= 0) {
        return;
    }
    drawImageAt(ImageName::Mail, Layout::kMailIcon);
    const Gdiplus::SolidBrush brush{Gdiplus::Color(Palette::kMailText)};
    drawText(*graphics(),
             mailCountText(sampler_->unreadMail),
             tools.large,
             toPointF(Layout::kMailCount),
             &tools.topLeft,
             brush);
}

void MainPage::drawCpuGraph() {
    const GraphReading reading{
        static_cast<int>(sampler_->cpuLoad), sampler_->memoryLoad, sampler_->dataReady};
    drawGraph(*graphics(), L"CPU", Layout::kCpuGraph, kCpuGraphColours, reading, cpuHistory_);
}

void MainPage::drawCpuTexts(const TextTools& tools) {
    const Gdiplus::SolidBrush brush{Gdiplus::Color(Palette::kCpuText)};
    const auto drawDetail = [&](const std::wstring& text, PagePoint point) {
        drawText(*graphics(), text, tools.details, toPointF(point), nullptr, brush);
    };
    if (!sampler_->coreTempAvailable) {
        drawDetail(L"Start CoreTemp!", Layout::kCpuName);
        return;
    }
    drawDetail(sampler_->cpuName, Layout::kCpuName);
    drawDetail(sampler_->cpuClockText, Layout::kCpuClock);
    drawDetail(vidText(sampler_->cpuVid), Layout::kCpuVid);
    drawText(*graphics(),
             cpuTemperatureText(sampler_->cpuTemperature, sampler_->cpuTempFahrenheit),
             tools.figures,
             toPointF(Layout::kCpuTemperature),
             &tools.rightBottom,
             brush);
}

void MainPage::drawGpu(const TextTools& tools) {
    const GpuStats& stats = sampler_->gpuStats;
    const Gdiplus::SolidBrush brush{Gdiplus::Color(Palette::kGpuText)};
    if (stats.loadValid) {
        drawGpuGraph();
    }
    drawText(*graphics(), sampler_->gpuName, tools.details, toPointF(Layout::kGpuName), nullptr, brush);
    if (stats.coreClockValid) {
        drawText(*graphics(),
                 gpuClockText(stats.coreClock),
                 tools.details,
                 toPointF(Layout::kGpuClock),
                 nullptr,
                 brush);
    }
    if (stats.temperatureValid) {
        drawText(*graphics(),
                 gpuTemperatureText(stats.temperature),
                 tools.figures,
                 toPointF(Layout::kGpuTemperature),
                 &tools.rightBottom,
                 brush);
    }
    if (!isComplete(stats)) {
        const Gdiplus::SolidBrush errorBrush{Gdiplus::Color(Palette::kGpuErrorText)};
        drawText(*graphics(),
                 L"Errors fetching some data\nfrom GPU",
                 tools.details,
                 toPointF(Layout::kGpuErrors),
                 nullptr,
                 errorBrush);
    }
}

void MainPage::drawGpuGraph() {
    const GpuStats& stats = sampler_->gpuStats;
    const GraphReading reading{stats.load, stats.memoryLoad, sampler_->dataReady};
    drawGraph(*graphics(), L"GPU", Layout::kGpuGraph, kGpuGraphColours, reading, gpuHistory_);
}

void MainPage::drawMissingGpu(const TextTools& tools) {
    const Gdiplus::SolidBrush brush{Gdiplus::Color(Palette::kGpuErrorText)};
    drawText(*graphics(),
             L"No supported discreet GPU\nfound",
             tools.details,
             toPointF(Layout::kGpuName),
             nullptr,
             brush);
}

void MainPage::drawIcons() {
    drawImageAt(sampler_->microphoneMuted ? ImageName::MicrophoneMuted : ImageName::MicrophoneOn,
                Layout::kMicrophoneIcon);
    drawImageAt(sampler_->speakerMuted ? ImageName::SpeakerMuted : ImageName::SpeakerOn,
                Layout::kSpeakerIcon);
    drawGamepadBattery();
}

void MainPage::drawGamepadBattery() {
    switch (sampler_->gamepadBattery) {
        case kGamepadBatteryFull:
            drawImageAt(ImageName::BatteryFull, Layout::kBatteryIcon);
            break;
        case kGamepadBatteryMedium:
            drawImageAt(ImageName::BatteryMedium, Layout::kBatteryIcon);
            break;
        case kGamepadBatteryLow:
            drawImageAt(ImageName::BatteryLow, Layout::kBatteryIcon);
            break;
        case kGamepadBatteryEmpty:
            if (blink_.isOn()) {
                drawImageAt(ImageName::BatteryEmpty, Layout::kBatteryIcon);
            }
            break;
        default:
            break;
    }
}

void MainPage::drawClock(const TextTools& tools) {
    const Gdiplus::SolidBrush brush{Gdiplus::Color(Palette::kClockText)};
    drawText(*graphics(),
             sampler_->dateTimeText(),
             tools.figures,
             toPointF(Layout::kClock),
             &tools.centred,
             brush);
}
