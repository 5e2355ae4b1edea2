#pragma once

#include <string>
#include <vector>

#include "framework/drawing/canvas.h"
#include "tests/pages/page_painter.h"
#include "tests/pages/page_pixels.h"

/// How a text stands out from what is around it.
struct TextContrast {
    std::wstring text;
    /// Over all pixels around the letters.
    double minimum;
    double fifthPercentile;
    /// Where the minimum is.
    int minimumX;
    int minimumY;
    /// The minimum that the fixed colours allow on the better of a black and a white ground: what the pages
    /// draw between ground and text stays.
    double bestMinimum;
};

/// A page and what it would look like without texts and without artwork.
struct ContrastFrames {
    PagePixels shown;
    PagePixels onBlack;
    PagePixels onWhite;
};

/// Measures each text against the pixels of the page that no text covers and that lie at most 2 pixels from a
/// pixel that it covers.
std::vector<TextContrast> measureTexts(Panelix::Canvas* canvas,
                                       const std::vector<PaintedText>& texts,
                                       const ContrastFrames& frames);

/// Contrast between the light and the dark parts of what stands in a rectangle: the 95th percentile of the
/// luminance against the 5th.
double iconContrast(const PagePixels& shown, int x, int y, int width, int height);
