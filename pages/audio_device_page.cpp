#include "pages/audio_device_page.h"

#include "framework/core/app.h"
#include "pages/list_navigation.h"
#include "pages/page_names.h"
#include "stats/system_info.h"

using Panelix::LcdButton;
using Panelix::TransitionKind;

AudioDevicePage::AudioDevicePage(Panelix::App* app, SystemInfo* sampler)
    : ListPage(kAudioDevicePageName, app),
      sampler_(sampler) {}

void AudioDevicePage::OnActivate() {
    std::uint32_t defaultIndex = 0;
    sampler_->listDevices(devices_, defaultIndex);
    activeIndex_ = static_cast<std::int32_t>(defaultIndex);
    cursorIndex_ = activeIndex_;
}

bool AudioDevicePage::Update(bool /*isActive*/, const Panelix::LcdButtons& /*buttons*/) {
    return true;
}

void AudioDevicePage::Draw(Panelix::Canvas* /*canvas*/, const Panelix::LcdButtons& buttons) {
    if (buttons.isPressed(LcdButton::Menu) || buttons.isPressed(LcdButton::Cancel)) {
        app()->SwitchPage(app()->GetMainPage(), TransitionKind::SlideFromTop);
        return;
    }
    if (buttons.isPressed(LcdButton::Right)) {
        app()->SwitchPage(app()->FindPage(kOptionsPageName), TransitionKind::SlideFromRight);
        return;
    }
    const ListCommand command = listCommand(buttons);
    // Without devices there is nothing to choose, and OK does nothing.
    if (command == ListCommand::Choose && cursorIndex_ < rowCount()) {
        choose();
        return;
    }
    cursorIndex_ = movedCursor(cursorIndex_, rowCount(), command);
    showDevices();
}

void AudioDevicePage::choose() {
    sampler_->setDefaultDevice(devices_[static_cast<std::size_t>(cursorIndex_)].id.c_str());
    app()->SwitchPage(app()->GetMainPage(), TransitionKind::SlideFromTop);
}

void AudioDevicePage::showDevices() {
    std::vector<Row>& rows = newRows();
    for (int i = 0; i < rowCount(); ++i) {
        Argb highlight = kNoHighlight;
        if (i == activeIndex_) {
            highlight = Palette::kListActiveDevice;
        } else if (i == cursorIndex_) {
            highlight = Palette::kListCursor;
        }
        rows.push_back({devices_[static_cast<std::size_t>(i)].name, highlight});
    }
    showList(L"Active Audio Device", ListLayout::kRightArrow, rows);
}

int AudioDevicePage::rowCount() const {
    return static_cast<int>(devices_.size());
}
