#include "pages/main_page.h"

#include <atomic>
#include <cstdint>
#include <optional>

#include "framework/core/app.h"
#include "framework/drawing/canvas.h"
#include "pages/page_names.h"
#include "stats/system_info.h"

using Panelix::LcdButton;
using Panelix::TransitionKind;

MainPage::MainPage(Panelix::App* app, SystemInfo* sampler, Panelix::Page* menuPage)
    : Page(kMainPageName, app),
      sampler_(sampler),
      menuPage_(menuPage) {}

void MainPage::Init(Panelix::Canvas* canvas) {
    painter_.setImages(loadMainPageImages(*canvas));
}

bool MainPage::Update(bool /*isActive*/, const Panelix::LcdButtons& /*buttons*/) {
    blink_.advance();
    if (repaint_.isDue()) {
        painter_.forget();
    }
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
    const bool screenshotWanted = !pictureMode_ && obeyMixerButtons(buttons);
    updateView();
    show();
    // What is saved is the last frame composed: this drawing of the page is not on the canvas yet.
    if (screenshotWanted && canvas->saveScreenshot()) {
        // The time of an error box must not count as the pass's own.
        app()->requestFullWait();
    }
    sampler_->dataReady = false;
}

/// Whether a screenshot is to be taken once the page is complete.
bool MainPage::obeyMixerButtons(const Panelix::LcdButtons& buttons) {
    selectedChannel_ = movedSelection(selectedChannel_, buttons);
    if (selectedChannel_ == MixerChannel::None) {
        if (buttons.isPressed(LcdButton::Up)) {
            sampler_->toggleMicrophoneMute();
        }
        return buttons.isPressed(LcdButton::Down);
    }
    const std::atomic<std::int32_t>& volume =
        selectedChannel_ == MixerChannel::Left ? sampler_->speakerLeftVolume : sampler_->speakerRightVolume;
    if (const std::optional<int> request = requestedVolume(volume, buttons)) {
        sampler_->setChannelVolume(endpointChannel(selectedChannel_), *request);
    }
    return false;
}

void MainPage::updateView() {
    if (pictureMode_) {
        view_ = {.pictureMode = true};
        return;
    }
    // Read after the buttons were obeyed: a notification may have brought a requested volume already.
    updateStatisticsView(view_, *sampler_, selectedChannel_, blink_.isOn(), sampler_->dateTimeText());
}

void MainPage::show() {
    const bool readingDue = sampler_->dataReady && !view_.pictureMode;
    if (readingDue || !painter_.shows(view_)) {
        painter_.paint(beginPainting(), *bitmap(), view_, readingDue);
    }
}
