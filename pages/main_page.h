#pragma once

#include "framework/core/page.h"
#include "pages/blink.h"
#include "pages/main_page_painter.h"
#include "pages/main_page_view.h"
#include "pages/mixer.h"
#include "pages/once_a_minute.h"

class SystemInfo;

/// The page "main", the first to be shown: graphs and figures of CPU and GPU, volume mixer, status icons,
/// mail count and clock, all from the sampler's snapshot; or, at the press of OK, a picture alone. Selection,
/// picture and graphs outlive a visit to another page. Main thread only.
class MainPage : public Panelix::Page {
public:
    /// All are borrowed. `app`, not null, outlives the page; `sampler`, not null, is not used once the
    /// application's destruction has begun; `menuPage` is the page that MENU opens, null for none.
    MainPage(Panelix::App* app, SystemInfo* sampler, Panelix::Page* menuPage);

    /// Loads the images; a second call gets the same ones.
    void Init(Panelix::Canvas* canvas) override;

    /// Advances the blinking and ticks the sampler, which drives all sampling; once a minute everything is to
    /// be painted anew. Always true.
    bool Update(bool isActive, const Panelix::LcdButtons& buttons) override;

    /// Obeys the buttons: MENU switches pages, OK toggles the picture, LEFT and RIGHT select a channel whose
    /// volume UP and DOWN change; without a channel UP toggles the microphone's mute and DOWN saves a
    /// screenshot. Then paints the page when a new reading is due in its graphs, when it shows something else
    /// than what was painted last, or when it was not painted anew for a minute.
    void Draw(Panelix::Canvas* canvas, const Panelix::LcdButtons& buttons) override;

private:
    [[nodiscard]] bool obeyMixerButtons(const Panelix::LcdButtons& buttons);
    void updateView();
    void show();

    SystemInfo* sampler_;
    Panelix::Page* menuPage_;
    MainPagePainter painter_;
    OnceAMinute repaint_;
    MixerChannel selectedChannel_ = MixerChannel::None;
    Blink blink_;
    bool pictureMode_ = false;
    /// What the page is to show. It stays from pass to pass for the memory of its texts.
    MainPageView view_;
};
