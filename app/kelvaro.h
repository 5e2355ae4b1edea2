#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>

#include "app/open_dialog.h"
#include "framework/core/app.h"
#include "stats/system_info.h"

/// The application: the sampler, the three pages and the answers to About and Settings.
class Kelvaro : public Panelix::App {
public:
    /// Throws what the framework, the sampler and the pages throw; nothing is left behind then.
    explicit Kelvaro(HINSTANCE instance);

    /// About: a box with the preview window as its owner, if there is one. Settings: the settings dialog.
    /// Both are modal and run a message loop, from which this may be called again: one that is open already
    /// is brought to the front instead, so there is never more than one of each. Other codes do nothing.
    void HandleCommand(std::uint32_t command) override;

    /// What the pages read; owned by the application.
    SystemInfo* sampler() const { return sampler_.get(); }

private:
    void showAbout();

    /// Gone before the base ends the pages, which only borrow it.
    std::unique_ptr<SystemInfo> sampler_;
    OpenDialog about_;
};
