#pragma once

#include <windows.h>

#include <gdiplus.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

/// The pixels of a 320 x 240 bitmap at one moment, as premultiplied ARGB values.
class PagePixels {
public:
    static constexpr int kWidth = 320;
    static constexpr int kHeight = 240;

    explicit PagePixels(Gdiplus::Bitmap& bitmap);

    std::uint32_t at(int x, int y) const { return values_[indexOf(x, y)]; }
    void set(int x, int y, std::uint32_t value) { values_[indexOf(x, y)] = value; }

    static bool isInside(int x, int y) { return x >= 0 && x < kWidth && y >= 0 && y < kHeight; }

    friend bool operator==(const PagePixels&, const PagePixels&) = default;

private:
    static std::size_t indexOf(int x, int y) { return static_cast<std::size_t>(y * kWidth + x); }

    std::vector<std::uint32_t> values_;
};

/// Passes when both are equal; otherwise names the first differing pixel and counts them.
testing::AssertionResult samePixels(const PagePixels& actual, const PagePixels& expected);
