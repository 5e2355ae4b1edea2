#pragma once

#include <string>
#include <vector>

#include "pages/main_page.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/core_audio/virtual_audio.h"
#include "stats/system_info.h"
#include "tests/framework/core/lcd_fixture.h"
#include "tests/framework/core/probe_app.h"
#include "tests/pages/buttons.h"
#include "tests/pages/expected_main_page.h"
#include "tests/pages/page_pixels.h"
#include "tests/pages/sample_snapshot.h"

/// A main page in an application on the virtual keyboard and the usual virtual sound devices, with a blue
/// page behind MENU. The snapshot starts with ordinary figures.
class MainPageOnKeyboard : public WithKeyboard {
protected:
    struct UsualAudio : Standins::VirtualAudio {
        UsualAudio() { addUsualDevices(); }
    };

    MainPageOnKeyboard();

    /// One Draw of the page, and what the page shows then.
    PagePixels draw(const Panelix::LcdButtons& buttons = {});

    /// The same with a new reading in the snapshot, which `expected` gets into its histories.
    PagePixels drawNewReading();

    /// Draws once and compares the page with `expected`, pixel by pixel; each text must have pixels of its
    /// own and be seen in its colour.
    void drawAndCompare(const std::string& state, const Panelix::LcdButtons& buttons = {});

    /// Compares what draw() gave last.
    void compare(const PagePixels& shown, const std::string& state);

    /// Draws `other` until the clock's text is the same before and after, and puts that into `expected`.
    void drawWithinOneSecond(MainPage& other);

    /// Paints over the page's picture, so that a drawing shows itself.
    void smear();

    CallLog log;
    UsualAudio audio;
    ProbeApp app{1};
    Standins::LoadedCoreAudio audioClasses;
    SystemInfo sampler;
    MainPage* page;
    ProbePage* menu;
    ExpectedMainPage expected{.snapshot = &sampler};

private:
    /// The clock's text before and after the last drawing.
    std::wstring clockBefore_;
    std::wstring clockAfter_;
};
