#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "framework/core/page.h"
#include "pages/list_layout.h"
#include "pages/once_a_minute.h"
#include "pages/palette.h"

/// Base of the pages that show a list: a background, a title, an arrow and rows of text, none of them clipped
/// or scrolled. Main thread only.
class ListPage : public Panelix::Page {
public:
    using Page::Page;

    /// Loads the background.
    void Init(Panelix::Canvas* canvas) override;

protected:
    struct Row {
        /// Borrowed until the row was shown.
        std::wstring_view text;
        /// Colour behind the row; transparent for none.
        Argb highlight = kNoHighlight;
    };

    static constexpr Argb kNoHighlight = 0;

    /// Empty, for the rows of a call of showList(): the same memory in every pass.
    std::vector<Row>& newRows() {
        rows_.clear();
        return rows_;
    }

    /// Paints the whole page, unless it shows these rows already and was painted in the last minute; to be
    /// called in every pass that shows the list. `title` and `arrow` are the same in every call.
    void showList(const wchar_t* title, const ListLayout::Arrow& arrow, const std::vector<Row>& rows);

private:
    /// A row that the page's bitmap shows.
    struct PaintedRow {
        explicit PaintedRow(const Row& row) : text(row.text), highlight(row.highlight) {}
        bool operator==(const Row& row) const { return text == row.text && highlight == row.highlight; }

        std::wstring text;
        Argb highlight;
    };

    bool paintList(const wchar_t* title, const ListLayout::Arrow& arrow, const std::vector<Row>& rows);

    /// Borrowed from the canvas; null when it could not be loaded.
    Gdiplus::Bitmap* background_ = nullptr;
    std::vector<Row> rows_;
    /// What the page's bitmap shows; nothing before a painting has gone well from beginning to end.
    std::optional<std::vector<PaintedRow>> painted_;
    OnceAMinute repaint_;
};
