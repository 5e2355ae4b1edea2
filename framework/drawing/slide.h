#pragma once

#include "framework/core/transition_kind.h"

namespace Panelix {

/// Where the two pages stand at one moment of a slide: top-left corners in pixels, relative to the canvas.
struct SlideOffsets {
    int currentX = 0;
    int currentY = 0;
    int previousX = 0;
    int previousY = 0;
};

/// The part of the way that a slide has gone at `progress`, both from 0 to 1: an S curve that starts and ends
/// slowly.
float easedPosition(float progress);

/// Offsets at `progress`; all are 0 for an unknown direction. At progress 1 the current page is at its place
/// and the previous one has just left.
SlideOffsets slideOffsets(float progress, TransitionKind direction);

}  // namespace Panelix
