#pragma once

#include <cstdint>

/// The phase of a blinking icon: off for nine updates, on for nine, and so on.
class Blink {
public:
    /// To be called once per update.
    void advance();

    bool isOn() const { return on_; }

private:
    /// An update that finds the countdown at 0 flips the phase, so a phase lasts one update more than this.
    static constexpr std::int32_t kReload = 8;

    bool on_ = false;
    std::int32_t countdown_ = kReload;
};
