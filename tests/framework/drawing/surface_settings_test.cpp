#include "framework/drawing/surface_settings.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "framework/core/page.h"
#include "framework/drawing/canvas.h"
#include "tests/framework/drawing/drawing_fixture.h"
#include "tests/support/import_override.h"

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

/// The settings that were made, in order: the function's name and the value.
std::vector<std::pair<std::string, int>> settings;
Gdiplus::GpGraphics* settingsOf = nullptr;

template <int index, typename Value>
Gdiplus::GpStatus WINGDIPAPI noteSetting(Gdiplus::GpGraphics* graphics, Value value) {
    constexpr std::array<const char*, 5> kNames{
        "CompositingMode", "CompositingQuality", "PixelOffsetMode", "SmoothingMode", "InterpolationMode"};
    settings.emplace_back(kNames[index], static_cast<int>(value));
    settingsOf = graphics;
    return Gdiplus::Ok;
}

Gdiplus::GpGraphics* surfaceGraphics = nullptr;
decltype(Gdiplus::DllExports::GdipGetImageGraphicsContext)* getGraphics = nullptr;

Gdiplus::GpStatus WINGDIPAPI noteGraphics(Gdiplus::GpImage* image, Gdiplus::GpGraphics** graphics) {
    const Gdiplus::GpStatus status = getGraphics(image, graphics);
    surfaceGraphics = *graphics;
    return status;
}

/// Shows what it draws with.
class GraphicsPage : public Panelix::Page {
public:
    GraphicsPage() : Page(L"graphics", nullptr) {}

    void Init(Panelix::Canvas*) override {}
    bool Update(bool, const Panelix::LcdButtons&) override { return true; }
    void Draw(Panelix::Canvas*, const Panelix::LcdButtons&) override {}

    const Gdiplus::Graphics& drawsWith() { return beginPainting(); }
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

TEST_F(SurfaceSettings, AreMadeOnTheCanvassSurfaceInThisOrder) {
    settings.clear();
    const ImportOverride graphics("gdiplus.dll", "GdipGetImageGraphicsContext", noteGraphics);
    getGraphics = graphics.original<decltype(noteGraphics)>();
    const ImportOverride mode(
        "gdiplus.dll", "GdipSetCompositingMode", noteSetting<0, Gdiplus::CompositingMode>);
    const ImportOverride quality(
        "gdiplus.dll", "GdipSetCompositingQuality", noteSetting<1, Gdiplus::CompositingQuality>);
    const ImportOverride offset(
        "gdiplus.dll", "GdipSetPixelOffsetMode", noteSetting<2, Gdiplus::PixelOffsetMode>);
    const ImportOverride smoothing(
        "gdiplus.dll", "GdipSetSmoothingMode", noteSetting<3, Gdiplus::SmoothingMode>);
    const ImportOverride interpolation(
        "gdiplus.dll", "GdipSetInterpolationMode", noteSetting<4, Gdiplus::InterpolationMode>);
    const Panelix::Canvas canvas;
    const std::vector<std::pair<std::string, int>> expected{{"CompositingMode", 0},
                                                            {"CompositingQuality", 1},
                                                            {"PixelOffsetMode", 3},
                                                            {"SmoothingMode", 3},
                                                            {"InterpolationMode", 0}};
    EXPECT_EQ(settings, expected);
    EXPECT_EQ(settingsOf, surfaceGraphics);
}
