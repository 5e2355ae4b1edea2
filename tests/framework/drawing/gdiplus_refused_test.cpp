// Runs with a GDI+ that does not start and answers every call with GdiplusNotInitialized.
#include <windows.h>

#include <gdiplus.h>

#include <gtest/gtest.h>

#include <list>
#include <string>

#include "framework/core/com_apartment.h"
#include "framework/drawing/blend.h"
#include "framework/drawing/canvas.h"
#include "framework/drawing/history_graph.h"
#include "framework/drawing/screenshot.h"
#include "framework/drawing/sys_exception.h"
#include "tests/framework/drawing/test_resources.h"
#include "tests/support/message_box_watcher.h"
#include "tests/support/only_wine.h"
#include "tests/support/registry_override.h"
#include "tests/support/temporary_folder.h"

using Panelix::Canvas;
using Panelix::SysException;
using Panelix::TransitionKind;

namespace {

const std::wstring kNotInitialized =
    L"GdiplusNotInitialized: Indicates that the GDI+ API is not in an initialized state. To function, all "
    L"GDI+ "
    L"objects require that GDI+ be in an initialized state. Initialize GDI+ by calling GdiplusStartup.";

class GdiplusRefused : public testing::Test {
protected:
    void SetUp() override {
        SKIP_ON_WINDOWS(kGdiplusIsTheSystems);
        ULONG_PTR token = 0;
        const Gdiplus::GdiplusStartupInput input;
        ASSERT_NE(Gdiplus::GdiplusStartup(&token, &input, nullptr), Gdiplus::Ok)
            << "the system's GDI+ was loaded instead of the stand-in";
    }

    template <typename Action>
    static void expectDrawingError(Action action, const std::wstring& message) {
        try {
            action();
            FAIL() << "no exception";
        } catch (const SysException& exception) {
            EXPECT_EQ(exception.title, L"Drawing Error");
            EXPECT_EQ(exception.message, message);
        }
    }

    MessageBoxWatcher watcher_;

private:
    Panelix::ComApartment com_;
};

}  // namespace

TEST_F(GdiplusRefused, CanvasIsMadeAndEndsAllTheSame) {
    for (int round = 0; round < 3; ++round) {
        const Canvas canvas;
        EXPECT_NO_THROW(canvas.checkStatus(L"Nothing was loaded yet"));
    }
    EXPECT_TRUE(watcher_.boxes().empty());
}

TEST_F(GdiplusRefused, FirstBitmapThrows) {
    Canvas canvas;
    expectDrawingError([&canvas] { canvas.getImage(TEST_BITMAP_GLYPH, 0); },
                       L"Failed to load bitmap: " + kNotInitialized);
}

TEST_F(GdiplusRefused, FirstPngThrows) {
    Canvas canvas;
    expectDrawingError([&canvas] { canvas.getImage(TEST_PNG_ONE_PIXEL, 1); },
                       L"Failed to load bitmap: " + kNotInitialized);
    EXPECT_TRUE(watcher_.boxes().empty());
}

TEST_F(GdiplusRefused, MissingPngIsStillReportedInABox) {
    Canvas canvas;
    EXPECT_EQ(canvas.getImage(TEST_PNG_MISSING, 1), nullptr);
    ASSERT_EQ(watcher_.boxes().size(), 1U);
    EXPECT_EQ(watcher_.boxes()[0].text, L"NULL");
}

TEST_F(GdiplusRefused, FirstFrameThrows) {
    Canvas canvas;
    for (int frame = 0; frame < 2; ++frame) {
        expectDrawingError([&canvas] { canvas.toLcdFrame(); },
                           L"Failed to retrieve background bitmap: " + kNotInitialized);
    }
}

TEST_F(GdiplusRefused, ComposingAndPresentingLeaveAStatus) {
    Canvas canvas;
    Gdiplus::Bitmap page(320, 240, PixelFormat32bppPARGB);
    Gdiplus::Graphics target(&page);
    EXPECT_EQ(target.GetLastStatus(), Gdiplus::GdiplusNotInitialized);
    canvas.composePages(&page, nullptr, 0.0F, TransitionKind::SlideFromLeft);
    canvas.composePages(&page, &page, 0.5F, TransitionKind::SlideFromLeft);
    canvas.composePages(nullptr, nullptr, 0.0F, TransitionKind::SlideFromLeft);
    canvas.presentTo(target);
    EXPECT_EQ(target.GetLastStatus(), Gdiplus::GdiplusNotInitialized);
}

TEST_F(GdiplusRefused, DrawingOperationsLeaveAStatus) {
    Gdiplus::Bitmap page(320, 240, PixelFormat32bppPARGB);
    Gdiplus::Bitmap other(320, 240, PixelFormat32bppPARGB);
    Gdiplus::Graphics target(&page);
    page.GetLastStatus();
    other.GetLastStatus();
    Panelix::blendImages(page, other, Panelix::BlendMode::Multiply);
    EXPECT_EQ(page.GetLastStatus(), Gdiplus::GdiplusNotInitialized);
    EXPECT_EQ(other.GetLastStatus(), Gdiplus::GdiplusNotInitialized);

    const Gdiplus::SolidBrush brush{Gdiplus::Color(0xFFFFFFFF)};
    const Gdiplus::Pen pen{Gdiplus::Color(0xFFFFFFFF)};
    std::list<std::int32_t> history{1, 2, 3};
    Panelix::drawHistoryGraph(target,
                              {.label = L"text",
                               .labelBrush = &brush,
                               .areaBrush = &brush,
                               .barBrush = &brush,
                               .linePen = &pen,
                               .x = 0,
                               .y = 0,
                               .width = 50,
                               .barGap = 1,
                               .barWidth = 2,
                               .value = 5,
                               .barValue = 6},
                              history,
                              true);
    EXPECT_EQ(history.size(), 4U);
    EXPECT_EQ(target.GetLastStatus(), Gdiplus::GdiplusNotInitialized);
}

TEST_F(GdiplusRefused, ScreenshotIsReportedInABox) {
    const RegistryOverride registry;
    const TemporaryFolder folder;
    for (const wchar_t* key :
         {L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
          L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders"}) {
        RegistryOverride::setText(HKEY_CURRENT_USER, key, L"Personal", folder.path());
    }
    Canvas canvas;
    canvas.saveScreenshot();
    const std::vector<SeenMessageBox> boxes = watcher_.boxes();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_EQ(boxes[0].caption, L"Error saving screenshot!");
    EXPECT_EQ(boxes[0].text, kNotInitialized);
    EXPECT_TRUE(folder.files().empty());
}

TEST_F(GdiplusRefused, NoEncoderIsFound) {
    CLSID clsid{9, 8, 7, {}};
    EXPECT_EQ(Panelix::findEncoderClsid(L"image/bmp", &clsid), -1);
    EXPECT_TRUE(IsEqualGUID(clsid, (CLSID{9, 8, 7, {}})));
}
