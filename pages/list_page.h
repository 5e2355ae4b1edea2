#pragma once

#include <windows.h>

#include <gdiplus.h>

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
    };

    static constexpr Argb kNoHighlight = 0;

    /// Paints the whole page.
    void drawList(const wchar_t* title, const ListLayout::Arrow& arrow, const std::vector<Row>& rows);

private:
    /// Borrowed from the canvas; null when it could not be loaded.
    Gdiplus::Bitmap* background_ = nullptr;
};
