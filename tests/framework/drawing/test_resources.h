#pragma once

// Ids of the test pictures; the resource script includes this file.

// 34 x 22 pixels; red is 7 * x, green 11 * y, blue x * y, each modulo 256.
#define TEST_BITMAP_GLYPH 801
// A header that claims to be 3 bytes long.
#define TEST_BITMAP_DAMAGED 802

// One pixel with red 200, green 100, blue 50 and alpha 128.
#define TEST_PNG_ONE_PIXEL 901
// 4 x 3 pixels, opaque, half transparent and transparent ones.
#define TEST_PNG_TWELVE_PIXELS 902
// Two pixels, (1, 2, 3) and (250, 128, 5), through a palette.
#define TEST_PNG_PALETTE 903
// Not a PNG.
#define TEST_PNG_CORRUPT 904
// The first half of a file.
#define TEST_PNG_TRUNCATED 905
// Compressed data with wrong bytes and check sums.
#define TEST_PNG_DAMAGED 906
// A header that says 0 x 0.
#define TEST_PNG_NO_PIXELS 907
// A header that says 60,000 x 60,000 before the data of one pixel.
#define TEST_PNG_HUGE_CLAIM 908
// An animation of two frames.
#define TEST_PNG_ANIMATED 909
// GIF files of one and two frames, for a decoder that reports them.
#define TEST_GIF_ONE_FRAME 910
#define TEST_GIF_TWO_FRAMES 911
// No such resources.
#define TEST_PNG_MISSING 999
#define TEST_BITMAP_MISSING 899
