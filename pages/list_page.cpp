#include "pages/list_page.h"

#include <algorithm>
#include <array>

#include "framework/drawing/canvas.h"
#include "framework/drawing/surface_settings.h"
#include "pages/image_ids.h"
#include "pages/page_drawing.h"

namespace {

void fillArrow(Gdiplus::Graphics& graphics, const ListLayout::Arrow& arrow, const Gdiplus::Brush& brush) {
    std::array<Gdiplus::Point, 3> corners;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        corners[i] = Gdiplus::Point(arrow[i].x, arrow[i].y);
    }
    graphics.FillPolygon(
        &brush, corners.data(), static_cast<INT>(corners.size()), Gdiplus::FillModeAlternate);
}

}  // namespace

void ListPage::Init(Panelix::Canvas* canvas) {
    background_ = canvas->getImage(IDB_LIST_BACKGROUND, 0);
    painted_.reset();
}

void ListPage::showList(const wchar_t* title, const ListLayout::Arrow& arrow, const std::vector<Row>& rows) {
    if (repaint_.isDue()) {
        painted_.reset();
    }
    if (painted_ && std::equal(painted_->begin(), painted_->end(), rows.begin(), rows.end())) {
        return;
    }
    painted_.reset();
    if (paintList(title, arrow, rows)) {
        painted_.emplace(rows.begin(), rows.end());
    }
}

/// Whether every call of GDI+ went well.
bool ListPage::paintList(const wchar_t* title, const ListLayout::Arrow& arrow, const std::vector<Row>& rows) {
    Gdiplus::Graphics& target = beginPainting();
    Gdiplus::StringFormat centred;
    setAlignment(centred, Gdiplus::StringAlignmentCenter, Gdiplus::StringAlignmentCenter);
    Gdiplus::StringFormat leftMiddle;
    leftMiddle.SetLineAlignment(Gdiplus::StringAlignmentCenter);
    const Gdiplus::SolidBrush textBrush{Gdiplus::Color(Palette::kListText)};

    drawImage(target, background_, ListLayout::kBackground);
    fillArrow(target, arrow, textBrush);
    const Gdiplus::FontFamily family(Panelix::kFontFace);
    const Gdiplus::Font font(&family, ListLayout::kFontPx, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
    drawText(target, title, font, toPointF(ListLayout::kTitle), &centred, textBrush);

    int index = 0;
    for (const Row& row : rows) {
        if (row.highlight != kNoHighlight) {
            fillRect(target, ListLayout::rowRect(index), row.highlight);
        }
        const Gdiplus::PointF place(static_cast<float>(ListLayout::kTextX), ListLayout::textMiddle(index));
        drawText(target, std::wstring(row.text), font, place, &leftMiddle, textBrush);
        ++index;
    }
    return allOk(target, centred, leftMiddle);
}
