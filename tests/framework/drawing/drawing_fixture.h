#pragma once

#include <windows.h>

#include <gdiplus.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "framework/core/com_apartment.h"
#include "framework/drawing/canvas.h"
#include "framework/drawing/lcd_frame.h"
#include "tests/support/image_compare.h"

/// A full-screen bitmap as pages have them, with something to draw on it.
struct Screen {
    Gdiplus::Bitmap bitmap{Panelix::kLcdWidth, Panelix::kLcdHeight, PixelFormat32bppPARGB};
    Gdiplus::Graphics graphics{&bitmap};

    void fill(std::uint32_t argb) { graphics.Clear(Gdiplus::Color(argb)); }
    Picture picture() { return readPicture(bitmap); }
};

/// COM and GDI+ run during every test, as they do around a canvas.
class DrawingTest : public testing::Test {
protected:
    static Picture frameOf(Panelix::Canvas& canvas) { return readFrame(canvas.toLcdFrame().get()); }

private:
    Panelix::ComApartment com_;
    Panelix::GdiplusSession gdiplus_;
};
