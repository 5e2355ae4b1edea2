#pragma once

#include <cstdint>
#include <vector>

#include "pages/list_page.h"
#include "stats/audio_device_entry.h"

class SystemInfo;

/// The page "Active Audio Device": the list of speaker devices, of which OK makes one the default. The list
/// is read when the page becomes active and stays as it is until the next time. Main thread only.
class AudioDevicePage : public ListPage {
public:
    /// Both are borrowed and not null. `app` outlives the page; `sampler` is not used once the application's
    /// destruction has begun.
    AudioDevicePage(Panelix::App* app, SystemInfo* sampler);

    /// Reads the devices and puts the cursor on the default one.
    void OnActivate() override;

    /// Always true: this page never ends the program.
    bool Update(bool isActive, const Panelix::LcdButtons& buttons) override;

    /// May switch pages and the default device.
    void Draw(Panelix::Canvas* canvas, const Panelix::LcdButtons& buttons) override;

private:
    void choose();
    void showDevices();
    int rowCount() const;

    SystemInfo* sampler_;
    /// The row that OK acts on.
    std::int32_t cursorIndex_ = 0;
    /// The row of the default device.
    std::int32_t activeIndex_ = 0;
    std::vector<AudioDeviceEntry> devices_;
};
