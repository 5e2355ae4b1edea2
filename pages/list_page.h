#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <optional>
#include <string>
#include <vector>

#include "framework/core/page.h"
#include "pages/list_layout.h"
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
        std::wstring text;
        /// Colour behind the row; transparent for none.
        Argb highlight = kNoHighlight;

        friend bool operator==(const Row&, const Row&) = default;
    };

    static constexpr Argb kNoHighlight = 0;

    /// Paints the whole page, unless it shows these rows already. `title` and `arrow` are the same in every
    /// call.
    void showList(const wchar_t* title, const ListLayout::Arrow& arrow, std::vector<Row> rows);

private:
    bool paintList(const wchar_t* title, const ListLayout::Arrow& arrow, const std::vector<Row>& rows);

    /// Borrowed from the canvas; null when it could not be loaded.
    Gdiplus::Bitmap* background_ = nullptr;
    /// What the page's bitmap shows; nothing before a painting has gone well from beginning to end.
    std::optional<std::vector<Row>> painted_;
};
