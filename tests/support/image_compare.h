#pragma once

#include <windows.h>

#include <gdiplus.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// Pixels in premultiplied ARGB (0xAARRGGBB), rows from top to bottom.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    /// Throws std::out_of_range outside the picture.
    std::uint32_t at(int x, int y) const;

    bool operator==(const Picture&) const = default;
};

/// Picture of one colour.
Picture plainPicture(int width, int height, std::uint32_t argb);

/// The pixels of `bitmap`; an empty picture and a failed test when GDI+ does not give them.
Picture readPicture(Gdiplus::Bitmap& bitmap);

/// A frame of the LCD, alpha as it is in the frame.
Picture readFrame(const std::uint8_t* frame);

/// Number of pixels that differ between two pictures of the same size.
std::size_t countDifferences(const Picture& first, const Picture& second);

/// Succeeds for equal pictures. Otherwise names the first differing pixel and leaves both pictures as PNG
/// files in the folder differing_pictures of the current folder, which under CTest is the test's build
/// folder. GDI+ must be running.
testing::AssertionResult samePicture(const Picture& actual, const Picture& expected);
