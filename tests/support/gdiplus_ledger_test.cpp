#include "tests/support/gdiplus_ledger.h"

#include <windows.h>

#include <gdiplus.h>

#include <gtest/gtest.h>

#include <memory>

#include "framework/drawing/canvas.h"
#include "framework/drawing/gdiplus_object.h"

namespace {

using Numbers = GdiplusLedger::Numbers;

TEST(GdiplusLedger, CountsWhatIsTakenAndGivenBack) {
    const Panelix::GdiplusSession gdiplus;
    const GdiplusLedger ledger;
    {
        Gdiplus::Bitmap bitmap(4, 4, PixelFormat32bppPARGB);
        const Gdiplus::Graphics graphics(&bitmap);
        const Gdiplus::SolidBrush brush{Gdiplus::Color(0xFF112233)};
        const Gdiplus::Pen pen{Gdiplus::Color(0xFF112233)};
        const Gdiplus::FontFamily family(L"Arial");
        const Gdiplus::Font font(&family, 15.0F, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
        const Gdiplus::StringFormat format;
        const auto onTheHeap = Panelix::makeGdiplusObject<Gdiplus::SolidBrush>(Gdiplus::Color(0xFF112233));
        const HDC screen = GetDC(nullptr);
        HBITMAP copy = nullptr;
        EXPECT_EQ(bitmap.GetHBITMAP(Gdiplus::Color(0), &copy), Gdiplus::Ok);
        const Gdiplus::Rect all(0, 0, 4, 4);
        Gdiplus::BitmapData bits{};
        bitmap.LockBits(&all, Gdiplus::ImageLockModeRead, PixelFormat32bppPARGB, &bits);
        const Numbers everything{{"GDI bitmap", 1},
                                 {"brush", 2},
                                 {"device context", 1},
                                 {"font", 1},
                                 {"font family", 1},
                                 {"graphics", 1},
                                 {"heap block", 1},
                                 {"image", 1},
                                 {"locked bits", 1},
                                 {"pen", 1},
                                 {"string format", 1}};
        EXPECT_EQ(ledger.outstanding(), everything);
        bitmap.UnlockBits(&bits);
        DeleteObject(copy);
        ReleaseDC(nullptr, screen);
        EXPECT_EQ(ledger.taken(), everything);
    }
    EXPECT_EQ(ledger.outstanding(), Numbers{});
}

TEST(GdiplusLedger, WhatFailsIsNotTaken) {
    const Panelix::GdiplusSession gdiplus;
    const GdiplusLedger ledger;
    const Gdiplus::FontFamily family(L"No Such Font Family");
    const Gdiplus::Graphics graphics(static_cast<Gdiplus::Image*>(nullptr));
    EXPECT_EQ(ledger.taken(), Numbers{});
}

TEST(GdiplusLedger, CountsCallsThatFailByFunction) {
    const Panelix::GdiplusSession gdiplus;
    const GdiplusLedger ledger;
    Gdiplus::Bitmap bitmap(4, 4, PixelFormat32bppPARGB);
    Gdiplus::Graphics graphics(&bitmap);
    const Gdiplus::SolidBrush brush{Gdiplus::Color(0xFF112233)};
    graphics.FillRectangle(&brush, 0, 0, 2, 2);
    EXPECT_EQ(ledger.failures(), Numbers{});
    graphics.DrawImage(static_cast<Gdiplus::Image*>(nullptr), 0, 0);
    graphics.FillRectangle(static_cast<const Gdiplus::Brush*>(nullptr), 0, 0, 2, 2);
    graphics.FillRectangle(static_cast<const Gdiplus::Brush*>(nullptr), 0, 0, 2, 2);
    const Gdiplus::FontFamily family(L"No Such Font Family");
    EXPECT_EQ(
        ledger.failures(),
        (Numbers{{"GdipCreateFontFamilyFromName", 1}, {"GdipDrawImageI", 1}, {"GdipFillRectangleI", 2}}));
}

TEST(GdiplusLedger, TellsWhatWasStillTakenWhenGdiplusEnded) {
    const GdiplusLedger ledger;
    {
        const Panelix::GdiplusSession gdiplus;
        const Gdiplus::SolidBrush brush{Gdiplus::Color(0xFF112233)};
    }
    EXPECT_EQ(ledger.outstandingAtTheEnd(), Numbers{});
    auto gdiplus = std::make_unique<Panelix::GdiplusSession>();
    Gdiplus::GpSolidFill* brush = nullptr;
    Gdiplus::DllExports::GdipCreateSolidFill(0xFF112233, &brush);
    gdiplus.reset();
    EXPECT_EQ(ledger.outstandingAtTheEnd(), (Numbers{{"brush", 1}}));
}

}  // namespace
