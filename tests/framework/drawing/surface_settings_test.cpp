#include "framework/drawing/surface_settings.h"

#include <gtest/gtest.h>

#include "framework/core/page.h"
#include "tests/framework/drawing/drawing_fixture.h"

namespace {

class SurfaceSettings : public DrawingTest {
protected:
    static void expectSet(const Gdiplus::Graphics& graphics) {
        EXPECT_EQ(graphics.GetCompositingMode(), Gdiplus::CompositingModeSourceOver);
        EXPECT_EQ(graphics.GetCompositingQuality(), Gdiplus::CompositingQualityHighSpeed);
        EXPECT_EQ(graphics.GetPixelOffsetMode(), Gdiplus::PixelOffsetModeNone);
        EXPECT_EQ(graphics.GetSmoothingMode(), Gdiplus::SmoothingModeNone);
        // What GDI+ reads back for its default.
        EXPECT_EQ(graphics.GetInterpolationMode(), Gdiplus::InterpolationModeBilinear);
    }
};

/// Shows what it draws with.
class GraphicsPage : public Panelix::Page {
public:
    GraphicsPage() : Page(L"graphics", nullptr) {}

    void Init(Panelix::Canvas*) override {}
    bool Update(bool, const Panelix::LcdButtons&) override { return true; }
    void Draw(Panelix::Canvas*, const Panelix::LcdButtons&) override {}

    const Gdiplus::Graphics& drawsWith() { return *graphics(); }
};

}  // namespace

TEST_F(SurfaceSettings, ReplaceWhateverWasSetBefore) {
    Screen screen;
    Gdiplus::Graphics& graphics = screen.graphics;
    graphics.SetCompositingMode(Gdiplus::CompositingModeSourceCopy);
    graphics.SetCompositingQuality(Gdiplus::CompositingQualityHighQuality);
    graphics.SetPixelOffsetMode(Gdiplus::PixelOffsetModeHalf);
    graphics.SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
    graphics.SetInterpolationMode(Gdiplus::InterpolationModeNearestNeighbor);
    Panelix::applySurfaceSettings(graphics);
    expectSet(graphics);
    EXPECT_EQ(graphics.GetLastStatus(), Gdiplus::Ok);
}

TEST_F(SurfaceSettings, AreThoseOfEveryPage) {
    GraphicsPage page;
    expectSet(page.drawsWith());
    EXPECT_EQ(page.bitmap()->GetWidth(), 320U);
    EXPECT_EQ(page.bitmap()->GetHeight(), 240U);
    EXPECT_EQ(page.bitmap()->GetPixelFormat(), PixelFormat32bppPARGB);
}
