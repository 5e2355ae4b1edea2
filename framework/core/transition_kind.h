#pragma once

#include <cstdint>

namespace Panelix {

/// The side from which the new page enters during a slide; the old one leaves at the opposite side.
enum class TransitionKind : std::uint32_t {
    SlideFromLeft = 0,
    SlideFromRight = 1,
    SlideFromTop = 2,
    SlideFromBottom = 3,
};

}  // namespace Panelix
