#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <array>
#include <cstdint>
#include <list>
#include <string>

#include "framework/core/page.h"
#include "pages/blink.h"
#include "pages/mixer_column.h"
#include "pages/page_geometry.h"

class SystemInfo;
struct TextTools;

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

    /// Advances the blinking and ticks the sampler, which drives all sampling. Always true.
    bool Update(bool isActive, const Panelix::LcdButtons& buttons) override;

    /// Paints the page and obeys the buttons: MENU switches pages, OK toggles the picture, LEFT and RIGHT
    /// select a channel whose volume UP and DOWN change; without a channel UP toggles the microphone's mute
    /// and DOWN saves a screenshot.
    void Draw(Panelix::Canvas* canvas, const Panelix::LcdButtons& buttons) override;

private:
    /// The images in the order in which they are loaded.
    enum class ImageName {
        Background,
        Mail,
        Picture,
        Shade,
        Overlay,
        MicrophoneOn,
        MicrophoneMuted,
        SpeakerOn,
        SpeakerMuted,
        BatteryFull,
        BatteryMedium,
        BatteryLow,
        BatteryEmpty,
        Count
    };

    /// Borrowed from the canvas; null when there is no such image.
    Gdiplus::Bitmap* image(ImageName name) const { return images_[static_cast<std::size_t>(name)]; }
    void drawImageAt(ImageName name, PagePoint point);

    void drawStatistics(Panelix::Canvas& canvas, const Panelix::LcdButtons& buttons);
    void drawBackdrop();
    void drawMail(const TextTools& tools);
    void drawCpuGraph();
    void drawCpuTexts(const TextTools& tools);
    void drawGpu(const TextTools& tools);
    void drawGpuGraph();
    void drawMissingGpu(const TextTools& tools);
    void drawIcons();
    void drawGamepadBattery();
    void drawClock(const TextTools& tools);

    SystemInfo* sampler_;
    Panelix::Page* menuPage_;
    std::array<Gdiplus::Bitmap*, static_cast<std::size_t>(ImageName::Count)> images_{};
    /// Loads in percent, newest first, at most one per column of the graph.
    std::list<std::int32_t> cpuHistory_;
    std::list<std::int32_t> gpuHistory_;
    MixerColumn mixer_;
    Blink blink_;
    bool pictureMode_ = false;
};
