#include "pages/list_page.h"

#include <gtest/gtest.h>

#include "tests/framework/core/lcd_fixture.h"
#include "tests/framework/core/probe_app.h"
#include "tests/pages/page_painter.h"

namespace {

constexpr std::uint32_t kHighlight = 0x3280FFFF;

/// A list of any length.
class AnyList : public ListPage {
public:
    explicit AnyList(Panelix::App* app) : ListPage(L"any", app) {}

    bool Update(bool, const Panelix::LcdButtons&) override { return true; }
    void Draw(Panelix::Canvas*, const Panelix::LcdButtons&) override {
        std::vector<Row>& rows = newRows();
        for (std::size_t i = 0; i < texts.size(); ++i) {
            rows.push_back({texts[i], i == highlighted ? kHighlight : kNoHighlight});
        }
        showList(L"Any", ListLayout::kRightArrow, rows);
    }

    std::vector<std::wstring> texts;
    std::size_t highlighted = 0;
};

class ListPageOnKeyboard : public WithKeyboard {
protected:
    void drawAndCompare(const std::string& name) {
        SCOPED_TRACE(name);
        page.Draw(app.canvas(), {});
        PagePainter painter(app.canvas());
        painter.bitmapImage(304, 0, 0);
        painter.triangle({295, 10}, {310, 18}, {295, 26}, 0xFFFFFFFF);
        painter.text({L"Any", 20, 0xFFFFFFFF, 160, 18, TextPlace::Centre});
        for (std::size_t i = 0; i < page.texts.size(); ++i) {
            const int top = i == 0 ? 36 : 40 + 29 * static_cast<int>(i);
            if (i == page.highlighted) {
                painter.fill(4, top, 312, 29, kHighlight);
            }
            const float middle = static_cast<float>(top) + 14.5F;
            painter.text({page.texts[i], 20, 0xFFFFFFFF, 5, middle, TextPlace::LeftMiddle});
        }
        EXPECT_TRUE(samePixels(PagePixels(*page.bitmap()), painter.pixels()));
        for (const PaintedText& text : painter.texts()) {
            if (!text.text.empty() && text.y < 200) {
                TextCoverage(app.canvas(), text);
            }
        }
    }

    ProbeApp app;
    AnyList page{&app};
};

TEST_F(ListPageOnKeyboard, ShowsBackgroundArrowAndTitleWithoutRows) {
    page.Init(app.canvas());
    drawAndCompare("empty");
}

TEST_F(ListPageOnKeyboard, RowsRunOffTheScreenWithoutScrolling) {
    page.Init(app.canvas());
    for (const std::size_t count : {1U, 5U, 7U, 30U}) {
        page.texts.clear();
        for (std::size_t i = 0; i < count; ++i) {
            page.texts.push_back(L"Row " + std::to_wstring(i));
        }
        for (const std::size_t highlighted : {std::size_t{0}, count / 2, count - 1}) {
            page.highlighted = highlighted;
            drawAndCompare(std::to_string(count) + " rows, " + std::to_string(highlighted));
        }
    }
}

TEST_F(ListPageOnKeyboard, LongTextsStayInOneLineAndRunOffTheRightEdge) {
    page.Init(app.canvas());
    page.texts = {std::wstring(80, L'W'), L"short", std::wstring(5000, L'g'), L""};
    page.highlighted = 2;
    drawAndCompare("long");
    // What is drawn for a long text stays within its row.
    const PagePixels withLong(*page.bitmap());
    page.texts[0] = L"";
    page.texts[2] = L"";
    page.Draw(app.canvas(), {});
    const PagePixels without(*page.bitmap());
    for (int y = 0; y < PagePixels::kHeight; ++y) {
        const bool inLongRow = (y >= 36 && y < 65) || (y >= 98 && y < 127);
        for (int x = 0; x < PagePixels::kWidth && !inLongRow; ++x) {
            ASSERT_EQ(withLong.at(x, y), without.at(x, y)) << x << ", " << y;
        }
    }
}

TEST_F(ListPageOnKeyboard, WithoutItsBackgroundShowsEverythingElse) {
    page.texts = {L"Row"};
    page.Draw(app.canvas(), {});
    const PagePixels shown(*page.bitmap());
    EXPECT_EQ(shown.at(300, 18), 0xFFFFFFFFU) << "the arrow";
    EXPECT_EQ(shown.at(310, 60), 0x32193232U) << "the highlight, premultiplied";
    EXPECT_EQ(shown.at(318, 238), 0U);
}

}  // namespace
