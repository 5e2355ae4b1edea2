#pragma once

#include <string>

#include "framework/core/lcd_buttons.h"
#include "framework/drawing/lcd_frame.h"

namespace Panelix {

/// The keyboard's colour LCD with its seven buttons. It is bound once: a keyboard unplugged later is not
/// noticed. Nothing here throws or is reported. Main thread only.
class LcdDevice {
public:
    LcdDevice() = default;
    /// Ends the LCD when it was initialised; the vendor's library stays loaded.
    ~LcdDevice();
    LcdDevice(const LcdDevice&) = delete;
    LcdDevice& operator=(const LcdDevice&) = delete;

    /// Loads the vendor's library and announces the applet under `name`. False when there is no usable LCD.
    bool Init(const std::wstring& name);

    /// Asks for the state of every button. A button counts as pressed in the one poll that sees it go down.
    void PollButtons();

    /// The result of the latest poll; lives as long as this object.
    const LcdButtons& Buttons() const { return buttons_; }

    /// Shows `frame`, kLcdFrameBytes long and borrowed. The vendor's interface lets its library write into
    /// it.
    void PushFrame(const LcdFrame& frame);

    /// Lets the vendor's library do its work; once per pass, after PushFrame.
    void Update();

private:
    bool initialised_ = false;
    LcdButtons buttons_;
};

}  // namespace Panelix
