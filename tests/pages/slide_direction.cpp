#include "tests/pages/slide_direction.h"

#include <array>

namespace {

using Panelix::TransitionKind;

bool hasColour(const Standins::G19Frame& frame, int x, int y, std::uint32_t argb) {
    const std::uint8_t* pixel = frame.pixels.data() + static_cast<std::ptrdiff_t>(y * 320 + x) * 4;
    return pixel[0] == (argb & 0xFFU) && pixel[1] == (argb >> 8 & 0xFFU) && pixel[2] == (argb >> 16 & 0xFFU);
}

/// The side at which the new page stands while it covers the screen in part.
std::optional<TransitionKind> sideOf(const Standins::G19Frame& frame, std::uint32_t argb) {
    const std::array<bool, 4> corners{hasColour(frame, 0, 0, argb),
                                      hasColour(frame, 319, 0, argb),
                                      hasColour(frame, 0, 239, argb),
                                      hasColour(frame, 319, 239, argb)};
    if (corners == std::array{true, false, true, false}) {
        return TransitionKind::SlideFromLeft;
    }
    if (corners == std::array{false, true, false, true}) {
        return TransitionKind::SlideFromRight;
    }
    if (corners == std::array{true, true, false, false}) {
        return TransitionKind::SlideFromTop;
    }
    if (corners == std::array{false, false, true, true}) {
        return TransitionKind::SlideFromBottom;
    }
    return std::nullopt;
}

}  // namespace

std::optional<TransitionKind> slideDirection(const Standins::VirtualG19& keyboard,
                                             std::uint32_t newPageArgb,
                                             std::uint64_t skip) {
    std::optional<TransitionKind> direction;
    for (std::uint64_t i = skip + 1; i <= keyboard.frameCount(); ++i) {
        const std::optional<Standins::G19Frame> frame = keyboard.frame(i);
        if (!frame) {
            continue;
        }
        const std::optional<TransitionKind> side = sideOf(*frame, newPageArgb);
        if (side && direction && side != direction) {
            return std::nullopt;
        }
        direction = side ? side : direction;
    }
    return direction;
}
