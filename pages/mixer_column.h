#pragma once

#include <windows.h>

#include <gdiplus.h>

#include "framework/core/lcd_buttons.h"
#include "pages/mixer.h"

class SystemInfo;
struct TextTools;

/// The volume mixer of the main page: two bars, a figure, and the buttons that select and change a channel.
/// Main thread only.
class MixerColumn {
public:
    /// `sampler` is borrowed and not null.
    explicit MixerColumn(SystemInfo* sampler) : sampler_(sampler) {}

    /// Obeys the buttons and draws the column. LEFT and RIGHT select a channel, whose volume UP and DOWN
    /// change while they are held. Without a channel UP toggles the microphone's mute, and DOWN asks for a
    /// screenshot: the result tells whether one is to be taken once the page is complete.
    [[nodiscard]] bool draw(Gdiplus::Graphics& graphics,
                            const TextTools& tools,
                            const Panelix::LcdButtons& buttons);

private:
    void drawMasterVolume(Gdiplus::Graphics& graphics, const TextTools& tools);
    void drawSelectedChannel(Gdiplus::Graphics& graphics,
                             const TextTools& tools,
                             const Panelix::LcdButtons& buttons);
    void drawBars(Gdiplus::Graphics& graphics);

    SystemInfo* sampler_;
    MixerChannel selected_ = MixerChannel::None;
};
