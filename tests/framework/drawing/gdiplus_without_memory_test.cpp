// Runs with a GDI+ that does not start and whose heap gives no memory.
#include <windows.h>

#include <gdiplus.h>

#include <gtest/gtest.h>

#include "framework/core/com_apartment.h"
#include "framework/drawing/canvas.h"
#include "framework/drawing/image.h"
#include "framework/drawing/sys_exception.h"
#include "tests/framework/drawing/test_resources.h"
#include "tests/support/message_box_watcher.h"
#include "tests/support/only_wine.h"

using Panelix::Canvas;

namespace {

class GdiplusWithoutMemory : public testing::Test {
protected:
    void SetUp() override {
        SKIP_ON_WINDOWS(kGdiplusIsTheSystems);
        ASSERT_EQ(Gdiplus::DllExports::GdipAlloc(8), nullptr)
            << "the system's GDI+ was loaded instead of the stand-in";
    }

private:
    Panelix::ComApartment com_;
};

}  // namespace

TEST_F(GdiplusWithoutMemory, ImagesAreReportedInABox) {
    const MessageBoxWatcher watcher;
    Canvas canvas;
    EXPECT_EQ(canvas.getImage(TEST_BITMAP_GLYPH, 0), nullptr);
    EXPECT_EQ(canvas.getImage(TEST_PNG_ONE_PIXEL, 1), nullptr);
    const std::vector<SeenMessageBox> boxes = watcher.boxes();
    ASSERT_EQ(boxes.size(), 2U);
    for (const SeenMessageBox& box : boxes) {
        EXPECT_EQ(box.text, L"NULL");
        EXPECT_EQ(box.caption, L"Panelix Image load Error");
    }
}

TEST_F(GdiplusWithoutMemory, FramesThrow) {
    Canvas canvas;
    EXPECT_THROW(canvas.toLcdFrame(), Panelix::SysException);
}
