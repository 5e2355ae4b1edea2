#include "framework/drawing/slide.h"

#include <cmath>
#include <numbers>

#include "framework/drawing/lcd_frame.h"

namespace Panelix {

namespace {

constexpr float kWidth = kLcdWidth;
constexpr float kHeight = kLcdHeight;

int rounded(float pixels) {
    return static_cast<int>(std::round(pixels));
}

}  // namespace

float easedPosition(float progress) {
    // The precision of each step is part of the curve: it decides which pixel a half rounds to.
    const float sine = static_cast<float>(std::sin(static_cast<double>(progress - 0.5F) * std::numbers::pi));
    const float rest = 1.0F - std::fabs(sine);
    const float sign = sine >= 0.0F ? 1.0F : -1.0F;
    return ((1.0F - rest * rest) * sign + 1.0F) * 0.5F;
}

SlideOffsets slideOffsets(float progress, TransitionKind direction) {
    const float gone = easedPosition(progress);
    const float remaining = 1.0F - gone;
    SlideOffsets offsets;
    switch (direction) {
        case TransitionKind::SlideFromLeft:
            offsets.currentX = rounded(-kWidth * remaining);
            offsets.previousX = rounded(kWidth * gone);
            break;
        case TransitionKind::SlideFromRight:
            offsets.currentX = rounded(kWidth * remaining);
            offsets.previousX = rounded(-kWidth * gone);
            break;
        case TransitionKind::SlideFromTop:
            offsets.currentY = rounded(-kHeight * remaining);
            offsets.previousY = rounded(kHeight * gone);
            break;
        case TransitionKind::SlideFromBottom:
            offsets.currentY = rounded(kHeight * remaining);
            offsets.previousY = rounded(-kHeight * gone);
            break;
    }
    return offsets;
}

}  // namespace Panelix
