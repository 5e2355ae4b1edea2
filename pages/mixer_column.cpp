#include "pages/mixer_column.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "pages/main_page_layout.h"
#include "pages/page_drawing.h"
#include "pages/text_tools.h"
#include "stats/system_info.h"

using Panelix::LcdButton;
namespace Layout = MainPageLayout;

namespace {

void drawFigure(Gdiplus::Graphics& graphics, const TextTools& tools, int percent, Argb colour) {
    const Gdiplus::SolidBrush brush{Gdiplus::Color(colour)};
    drawText(graphics,
             std::to_wstring(percent),
             tools.large,
             toPointF(Layout::kVolumeFigure),
             &tools.centred,
             brush);
}

void drawBar(Gdiplus::Graphics& graphics, int x, int percent) {
    fillRect(graphics, Layout::volumeBar(x, percent), Palette::kChannelVolume);
}

}  // namespace

bool MixerColumn::draw(Gdiplus::Graphics& graphics,
                       const TextTools& tools,
                       const Panelix::LcdButtons& buttons) {
    selected_ = movedSelection(selected_, buttons);
    bool screenshotWanted = false;
    if (selected_ == MixerChannel::None) {
        drawMasterVolume(graphics, tools);
        if (buttons.isPressed(LcdButton::Up)) {
            sampler_->toggleMicrophoneMute();
        }
        screenshotWanted = buttons.isPressed(LcdButton::Down);
    } else {
        drawSelectedChannel(graphics, tools, buttons);
    }
    drawBars(graphics);
    return screenshotWanted;
}

void MixerColumn::drawMasterVolume(Gdiplus::Graphics& graphics, const TextTools& tools) {
    drawFigure(graphics, tools, sampler_->speakerMasterVolume, Palette::kMasterVolumeText);
}

void MixerColumn::drawSelectedChannel(Gdiplus::Graphics& graphics,
                                      const TextTools& tools,
                                      const Panelix::LcdButtons& buttons) {
    const bool isLeft = selected_ == MixerChannel::Left;
    const std::atomic<std::int32_t>& volume =
        isLeft ? sampler_->speakerLeftVolume : sampler_->speakerRightVolume;
    fillRect(graphics,
             isLeft ? Layout::kLeftChannelHighlight : Layout::kRightChannelHighlight,
             Palette::kSelectedChannel);
    if (const std::optional<int> request = requestedVolume(volume, buttons)) {
        sampler_->setChannelVolume(endpointChannel(selected_), *request);
    }
    // Read anew: a notification may have brought the requested volume already.
    drawFigure(graphics, tools, volume, Palette::kChannelVolume);
}

void MixerColumn::drawBars(Gdiplus::Graphics& graphics) {
    drawBar(graphics, Layout::kLeftVolumeBarX, sampler_->speakerLeftVolume);
    drawBar(graphics, Layout::kRightVolumeBarX, sampler_->speakerRightVolume);
}
