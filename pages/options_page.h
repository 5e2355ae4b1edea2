#pragma once

#include <array>
#include <cstdint>

#include "pages/list_page.h"

/// The menu page "options": About, Settings and Exit Applet. Main thread only.
class OptionsPage : public ListPage {
public:
    /// `app` is borrowed, not null, and outlives the page.
    explicit OptionsPage(Panelix::App* app);

    /// Puts the highlight on the first entry.
    void OnActivate() override;

    /// False once Exit Applet was chosen.
    bool Update(bool isActive, const Panelix::LcdButtons& buttons) override;

    /// May switch pages, and runs the dialogs of About and Settings inside the call.
    void Draw(Panelix::Canvas* canvas, const Panelix::LcdButtons& buttons) override;

private:
    void choose();
    void runCommand(std::uint32_t command);
    void showEntries();

    std::int32_t selectedEntry_ = 0;
    bool exitRequested_ = false;
};
