#include "pages/options_page.h"

#include "framework/core/app.h"
#include "framework/core/command_codes.h"
#include "pages/list_navigation.h"
#include "pages/page_names.h"

using Panelix::LcdButton;
using Panelix::TransitionKind;

namespace {

enum Entry { kAbout, kSettings, kExitApplet, kEntryCount };

constexpr std::array<const wchar_t*, kEntryCount> kEntries{L"About", L"Settings", L"Exit Applet"};

}  // namespace

OptionsPage::OptionsPage(Panelix::App* app) : ListPage(kOptionsPageName, app) {}

void OptionsPage::OnActivate() {
    selectedEntry_ = kAbout;
}

bool OptionsPage::Update(bool /*isActive*/, const Panelix::LcdButtons& /*buttons*/) {
    return !exitRequested_;
}

void OptionsPage::Draw(Panelix::Canvas* /*canvas*/, const Panelix::LcdButtons& buttons) {
    if (buttons.isPressed(LcdButton::Menu)) {
        app()->SwitchPage(app()->GetMainPage(), TransitionKind::SlideFromTop);
        return;
    }
    if (buttons.isPressed(LcdButton::Cancel) || buttons.isPressed(LcdButton::Left)) {
        app()->SwitchPage(app()->FindPage(kAudioDevicePageName), TransitionKind::SlideFromLeft);
        return;
    }
    const ListCommand command = listCommand(buttons);
    if (command == ListCommand::Choose) {
        choose();
        return;
    }
    selectedEntry_ = movedCursor(selectedEntry_, kEntryCount, command);
    showEntries();
}

void OptionsPage::choose() {
    switch (selectedEntry_) {
        case kAbout:
            runCommand(Panelix::kCommandAbout);
            break;
        case kSettings:
            runCommand(Panelix::kCommandSettings);
            break;
        default:
            exitRequested_ = true;
            break;
    }
    app()->SwitchPage(app()->GetMainPage(), TransitionKind::SlideFromTop);
}

void OptionsPage::runCommand(std::uint32_t command) {
    app()->HandleCommand(command);
    // The dialog's time must not count as the pass's own.
    app()->requestFullWait();
}

void OptionsPage::showEntries() {
    std::vector<Row>& rows = newRows();
    for (int i = 0; i < kEntryCount; ++i) {
        rows.push_back({kEntries[static_cast<std::size_t>(i)],
                        i == selectedEntry_ ? Palette::kListCursor : kNoHighlight});
    }
    showList(L"Options", ListLayout::kLeftArrow, rows);
}
