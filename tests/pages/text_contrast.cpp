#include "tests/pages/text_contrast.h"

#include <algorithm>

#include "tests/pages/contrast.h"

namespace {

constexpr int kAround = 2;
constexpr double kHighest = 21.0;

bool isNear(const TextCoverage& coverage, int x, int y) {
    for (int dy = -kAround; dy <= kAround; ++dy) {
        for (int dx = -kAround; dx <= kAround; ++dx) {
            if (PagePixels::isInside(x + dx, y + dy) && coverage.at(x + dx, y + dy) > 0) {
                return true;
            }
        }
    }
    return false;
}

bool isFree(const std::vector<TextCoverage>& coverages, int x, int y) {
    return std::ranges::all_of(coverages, [x, y](const TextCoverage& c) { return c.at(x, y) == 0; });
}

TextContrast measure(const PaintedText& text,
                     const TextCoverage& own,
                     const std::vector<TextCoverage>& all,
                     const ContrastFrames& frames) {
    TextContrast result{text.text, kHighest, kHighest, 0, 0, kHighest};
    std::vector<double> ratios;
    double onBlack = kHighest;
    double onWhite = kHighest;
    const auto ratioOn = [&text](std::uint32_t ground) {
        return contrastRatio(drawnOver(text.argb, ground), ground);
    };
    for (int y = 0; y < PagePixels::kHeight; ++y) {
        for (int x = 0; x < PagePixels::kWidth; ++x) {
            if (isNear(own, x, y) && isFree(all, x, y)) {
                const double ratio = ratioOn(frames.shown.at(x, y));
                ratios.push_back(ratio);
                if (ratio < result.minimum) {
                    result.minimum = ratio;
                    result.minimumX = x;
                    result.minimumY = y;
                }
                onBlack = std::min(onBlack, ratioOn(frames.onBlack.at(x, y)));
                onWhite = std::min(onWhite, ratioOn(frames.onWhite.at(x, y)));
            }
        }
    }
    result.bestMinimum = std::max(onBlack, onWhite);
    EXPECT_FALSE(ratios.empty()) << "nothing was measured";
    if (!ratios.empty()) {
        result.fifthPercentile = percentile(ratios, 5.0);
    }
    return result;
}

}  // namespace

std::vector<TextContrast> measureTexts(Panelix::Canvas* canvas,
                                       const std::vector<PaintedText>& texts,
                                       const ContrastFrames& frames) {
    std::vector<TextCoverage> coverages;
    for (const PaintedText& text : texts) {
        coverages.emplace_back(canvas, text);
    }
    std::vector<TextContrast> result;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        result.push_back(measure(texts[i], coverages[i], coverages, frames));
    }
    return result;
}

double iconContrast(const PagePixels& shown, int x, int y, int width, int height) {
    std::vector<double> luminances;
    for (int row = y; row < y + height; ++row) {
        for (int column = x; column < x + width; ++column) {
            luminances.push_back(relativeLuminance(shown.at(column, row)));
        }
    }
    return (percentile(luminances, 95.0) + 0.05) / (percentile(luminances, 5.0) + 0.05);
}
