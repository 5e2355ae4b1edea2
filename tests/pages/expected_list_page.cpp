#include "tests/pages/expected_list_page.h"

void paintExpectedList(PagePainter& painter,
                       const std::wstring& title,
                       ExpectedArrow arrow,
                       const std::vector<ExpectedRow>& rows) {
    painter.bitmapImage(304, 0, 0);
    if (arrow == ExpectedArrow::Left) {
        painter.triangle({24, 10}, {24, 26}, {9, 18}, 0xFFFFFFFF);
    } else {
        painter.triangle({295, 10}, {310, 18}, {295, 26}, 0xFFFFFFFF);
    }
    painter.text({title, 20, 0xFFFFFFFF, 160, 18, TextPlace::Centre});
    int top = 36;
    int index = 0;
    for (const ExpectedRow& row : rows) {
        if (row.highlight != 0) {
            painter.fill(4, top, 312, 29, row.highlight);
        }
        painter.text({row.text, 20, 0xFFFFFFFF, 5, static_cast<float>(top) + 14.5F, TextPlace::LeftMiddle});
        ++index;
        top = 40 + 29 * index;
    }
}
