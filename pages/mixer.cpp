#include "pages/mixer.h"

using Panelix::LcdButton;

namespace {

// Unequal on purpose: up quickly, down finely.
constexpr int kRaisePercent = 2;
constexpr int kLowerPercent = 1;

MixerChannel nextChannel(MixerChannel channel) {
    switch (channel) {
        case MixerChannel::None:
            return MixerChannel::Left;
        case MixerChannel::Left:
            return MixerChannel::Right;
        default:
            return MixerChannel::None;
    }
}

MixerChannel previousChannel(MixerChannel channel) {
    switch (channel) {
        case MixerChannel::None:
            return MixerChannel::Right;
        case MixerChannel::Right:
            return MixerChannel::Left;
        default:
            return MixerChannel::None;
    }
}

}  // namespace

MixerChannel movedSelection(MixerChannel selected, const Panelix::LcdButtons& buttons) {
    if (buttons.isPressed(LcdButton::Left)) {
        return previousChannel(selected);
    }
    if (buttons.isPressed(LcdButton::Right)) {
        return nextChannel(selected);
    }
    return selected;
}

std::optional<int> requestedVolume(int percent, const Panelix::LcdButtons& buttons) {
    if (buttons.isHeld(LcdButton::Up)) {
        return percent + kRaisePercent;
    }
    if (buttons.isHeld(LcdButton::Down)) {
        return percent - kLowerPercent;
    }
    return std::nullopt;
}

unsigned endpointChannel(MixerChannel channel) {
    return static_cast<unsigned>(channel) - 1;
}
