#include "app/kelvaro.h"

#include <string>
#include <utility>

#include "app/about_text.h"
#include "app/resource_ids.h"
#include "app/settings_dialog.h"
#include "framework/core/command_codes.h"
#include "pages/audio_device_page.h"
#include "pages/main_page.h"
#include "pages/options_page.h"

namespace {

constexpr wchar_t kName[] = L"Kelvaro";

/// Duration of a pass, in milliseconds: about 15 frames a second. What goes by passes gets faster or slower
/// with it: a phase of a blinking icon takes nine of them (pages/blink.h), and a volume button that is held
/// moves the volume by one step in each (pages/mixer.cpp).
constexpr std::uint64_t kFramePeriodMs = 66;

}  // namespace

Kelvaro::Kelvaro(HINSTANCE instance)
    : App(instance, kName, MAKEINTRESOURCEW(IDI_KELVARO), kFramePeriodMs),
      sampler_(std::make_unique<SystemInfo>()) {
    auto audioDevicePage = std::make_unique<AudioDevicePage>(this, sampler());
    auto mainPage = std::make_unique<MainPage>(this, sampler(), audioDevicePage.get());
    SetMainPage(std::move(mainPage));
    AddPage(std::move(audioDevicePage), false);
    AddPage(std::make_unique<OptionsPage>(this), false);
}

void Kelvaro::HandleCommand(std::uint32_t command) {
    switch (command) {
        case Panelix::kCommandAbout:
            showAbout();
            break;
        case Panelix::kCommandSettings:
            showSettingsDialog(instance());
            break;
        default:
            break;
    }
}

void Kelvaro::showAbout() {
    about_.show(
        [this] { MessageBoxW(window(), kAboutText, (L"About " + name()).c_str(), MB_ICONINFORMATION); });
}
