#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/pages/page_painter.h"

struct ExpectedRow {
    std::wstring text;
    /// 0 for none.
    std::uint32_t highlight = 0;
};

enum class ExpectedArrow { Left, Right };

/// Paints what a list page must look like, written down once more and independently of the pages.
void paintExpectedList(PagePainter& painter,
                       const std::wstring& title,
                       ExpectedArrow arrow,
                       const std::vector<ExpectedRow>& rows);
