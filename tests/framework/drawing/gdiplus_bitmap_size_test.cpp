// Runs with a GDI+ whose GDI bitmaps have the size that the test asks for.
#include <windows.h>

#include <gtest/gtest.h>

#include <array>

#include "framework/core/exported_function.h"
#include "framework/drawing/canvas.h"
#include "framework/drawing/sys_exception.h"
#include "tests/support/only_wine.h"

using Panelix::Canvas;
using Panelix::SysException;

namespace {

using SetBitmapSize = void(int width, int height) noexcept;

class GdiplusBitmapSize : public testing::Test {
protected:
    void SetUp() override {
        SKIP_ON_WINDOWS(kGdiplusIsTheSystems);
        setBitmapSize_ =
            Panelix::exportedFunction<SetBitmapSize>(GetModuleHandleW(L"gdiplus.dll"), "setBitmapSize");
        ASSERT_NE(setBitmapSize_, nullptr) << "the system's GDI+ was loaded instead of the stand-in";
    }

    SetBitmapSize* setBitmapSize_ = nullptr;
    Canvas canvas_;
};

}  // namespace

TEST_F(GdiplusBitmapSize, OfTheLcdGivesAFrame) {
    setBitmapSize_(320, 240);
    EXPECT_NE(canvas_.toLcdFrame(), nullptr);
}

TEST_F(GdiplusBitmapSize, OfAnythingElseThrows) {
    struct Case {
        int width;
        int height;
    };
    constexpr std::array<Case, 6> cases{{
        {10, 10},
        {319, 240},
        {321, 240},
        {320, 239},
        {320, 241},
        {240, 320},
    }};
    for (const Case& size : cases) {
        setBitmapSize_(size.width, size.height);
        try {
            canvas_.toLcdFrame();
            ADD_FAILURE() << size.width << " x " << size.height;
        } catch (const SysException& error) {
            EXPECT_EQ(error.message, L"Bitmap incorrect size");
            EXPECT_EQ(error.title, L"Drawing Error");
        }
    }
}
