#include "pages/main_page_painter.h"

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "framework/drawing/canvas.h"
#include "framework/drawing/surface_settings.h"
#include "tests/pages/expected_main_page.h"
#include "tests/pages/page_painter.h"
#include "tests/pages/sample_snapshot.h"
#include "tests/support/failing_gdiplus.h"

namespace {

using enum MainPageImage;

/// Paints snapshots of its own: there is no sampler, and neither COM nor Core Audio runs.
class MainPagePainting : public testing::Test {
protected:
    MainPagePainting() {
        APTTYPE type{};
        APTTYPEQUALIFIER qualifier{};
        EXPECT_EQ(CoGetApartmentType(&type, &qualifier), CO_E_NOTINITIALIZED);
        Panelix::applySurfaceSettings(graphics);
        setOrdinaryFigures(snapshot);
        expected.clock = L"16 November 2026   4:03:16  AM";
    }

    bool paint(bool record = false, MixerChannel selected = MixerChannel::None) {
        MainPageView view;
        updateStatisticsView(view, snapshot, selected, expected.blinkOn, expected.clock);
        return painter.paint(graphics, bitmap, view, record);
    }

    bool paintPicture() { return painter.paint(graphics, bitmap, {.pictureMode = true}, false); }

    /// A picture of one colour in the place of an image.
    Gdiplus::Bitmap& setImage(MainPageImage image, int width, int height, Gdiplus::ARGB colour) {
        owned.push_back(std::make_unique<Gdiplus::Bitmap>(width, height, PixelFormat32bppPARGB));
        Gdiplus::Graphics(owned.back().get()).Clear(Gdiplus::Color(colour));
        images[image] = owned.back().get();
        painter.setImages(images);
        return *owned.back();
    }

    void removeImage(MainPageImage image) {
        images[image] = nullptr;
        painter.setImages(images);
    }

    Panelix::Canvas canvas;
    Gdiplus::Bitmap bitmap{PagePixels::kWidth, PagePixels::kHeight, PixelFormat32bppPARGB};
    Gdiplus::Graphics graphics{&bitmap};
    Snapshot snapshot;
    MainPageImages images;
    std::vector<std::unique_ptr<Gdiplus::Bitmap>> owned;
    MainPagePainter painter;
    ExpectedMainPage expected{.snapshot = &snapshot};
};

TEST_F(MainPagePainting, ShowsTheSnapshotWithoutAnyImage) {
    const std::function<void()> states[] = {
        [] {},
        [this] { snapshot.coreTempAvailable = false; },
        [this] { snapshot.gpuStats.temperatureValid = false; },
        [this] { snapshot.gpuAvailable = false; },
        [this] { snapshot.unreadMail = 3; },
        [this] { snapshot.cpuLoad = 0; },
    };
    for (const std::function<void()>& change : states) {
        change();
        graphics.Clear(Gdiplus::Color(0));
        paint();
        PagePainter anew(&canvas);
        expected.paint(anew, ExpectedMainPage::Ground::Empty);
        EXPECT_TRUE(samePixels(PagePixels(bitmap), anew.pixels()));
    }
}

TEST_F(MainPagePainting, RecordsALoadInEachGraphThatIsShown) {
    paint(true);
    snapshot.cpuLoad = 80;
    snapshot.gpuStats.loadValid = false;
    paint(true);
    paint(false);
    snapshot.gpuAvailable = false;
    paint(true);
    EXPECT_EQ(painter.histories().cpu, (std::list<std::int32_t>{80, 80, 37}));
    EXPECT_EQ(painter.histories().gpu, (std::list<std::int32_t>{48}));
}

TEST_F(MainPagePainting, PutsEveryImageInItsPlace) {
    setImage(Background, 320, 240, 0xFF808080);
    setImage(Shade, 320, 240, 0xFFFFFFFF);
    setImage(Overlay, 320, 240, 0);
    struct Icon {
        MainPageImage image;
        int x;
        int y;
        int width;
        int height;
        std::function<void()> show;
    };
    const Icon icons[] = {
        {Mail, 235, 155, 34, 22, [this] { snapshot.unreadMail = 1; }},
        {MicrophoneOn, 232, 112, 25, 37, [] {}},
        {MicrophoneMuted, 232, 112, 25, 37, [this] { snapshot.microphoneMuted = true; }},
        {SpeakerOn, 256, 112, 18, 37, [] {}},
        {SpeakerMuted, 256, 112, 18, 37, [this] { snapshot.speakerMuted = true; }},
        {BatteryFull, 274, 112, 42, 37, [this] { snapshot.gamepadBattery = 5; }},
        {BatteryMedium, 274, 112, 42, 37, [this] { snapshot.gamepadBattery = 4; }},
        {BatteryLow, 274, 112, 42, 37, [this] { snapshot.gamepadBattery = 3; }},
        {BatteryEmpty,
         274,
         112,
         42,
         37,
         [this] {
             snapshot.gamepadBattery = 2;
             expected.blinkOn = true;
         }},
    };
    for (const Icon& icon : icons) {
        setOrdinaryFigures(snapshot);
        removeImage(icon.image);
        icon.show();
        paint();
        const PagePixels without(bitmap);
        setImage(icon.image, icon.width, icon.height, 0xFF00FF00);
        paint();
        const PagePixels with(bitmap);
        for (int y = 0; y < PagePixels::kHeight; ++y) {
            for (int x = 0; x < PagePixels::kWidth; ++x) {
                const bool inside =
                    x >= icon.x && x < icon.x + icon.width && y >= icon.y && y < icon.y + icon.height;
                ASSERT_EQ(with.at(x, y), inside ? 0xFF00FF00U : without.at(x, y))
                    << "image " << static_cast<int>(icon.image) << " at " << x << ", " << y;
            }
        }
        removeImage(icon.image);
    }
}

TEST_F(MainPagePainting, CopiesABarUntilItsFigureChanges) {
    for (const MainPageImage image : {Background, Overlay, MicrophoneOn, SpeakerOn}) {
        setImage(image, 320, 240, 0);
    }
    snapshot.gpuAvailable = false;
    paint();
    FailingGdiplus gdiplus;
    for (const int volume : {20, 60, 20, 101, -1}) {
        snapshot.speakerLeftVolume = volume;
        paint();
        const PagePixels first(bitmap);
        EXPECT_EQ(first.at(288, 80) == first.at(288, 30), volume < 24 || volume > 100) << volume;
        gdiplus.failCall(0);
        paint();
        const bool onScale = volume >= 0 && volume <= 100;
        EXPECT_EQ(gdiplus.calls("GdipFillRectangleI"), onScale ? 0 : 1) << volume;
        EXPECT_TRUE(samePixels(PagePixels(bitmap), first)) << volume;
    }
}

TEST_F(MainPagePainting, MultipliesTheShadeIntoTheBackgroundUnderTheOverlay) {
    setImage(Background, 320, 240, 0xFF808080);
    setImage(Shade, 320, 240, 0xFF804000);
    Gdiplus::Bitmap& overlay = setImage(Overlay, 320, 240, 0);
    overlay.SetPixel(315, 235, Gdiplus::Color(0xFF123456));
    paint();
    const PagePixels shown(bitmap);
    EXPECT_EQ(shown.at(314, 235), 0xFF402000U);
    EXPECT_EQ(shown.at(315, 235), 0xFF123456U);
}

TEST_F(MainPagePainting, InPictureModeShowsThePictureAlone) {
    setImage(Picture, 320, 240, 0xFF445566);
    EXPECT_TRUE(paintPicture());
    const PagePixels shown(bitmap);
    EXPECT_EQ(shown.at(0, 0), 0xFF445566U);
    EXPECT_EQ(shown.at(160, 225), 0xFF445566U);
    EXPECT_EQ(shown.at(319, 239), 0xFF445566U);
}

TEST_F(MainPagePainting, TellsWhetherEverythingCouldBeDrawn) {
    EXPECT_FALSE(paint()) << "images are missing";
    EXPECT_FALSE(paintPicture());
    for (const MainPageImage image : {Background, Overlay, Picture, MicrophoneOn, SpeakerOn}) {
        setImage(image, 320, 240, 0xFF808080);
    }
    EXPECT_TRUE(paint());
    setImage(Shade, 320, 240, 0xFFFFFFFF);
    EXPECT_TRUE(paint());
    setImage(Shade, 10, 10, 0xFFFFFFFF);
    EXPECT_FALSE(paint()) << "the shade is too small";
    setImage(Shade, 320, 240, 0xFFFFFFFF);
    EXPECT_TRUE(paint()) << "and the failure is forgotten";
}

}  // namespace
