#pragma once

#include "framework/drawing/plot_rows.h"
#include "pages/page_geometry.h"

/// Where things stand on the main page. A text's point is what its alignment refers to: the top-left corner,
/// the centre or the bottom-right corner of the text.
namespace MainPageLayout {

/// Heights of the letters, in pixels.
inline constexpr float kFigureFontPx = 20.0F;
inline constexpr float kDetailFontPx = 15.0F;
inline constexpr float kLargeFontPx = 24.0F;

inline constexpr PagePoint kFullScreen{0, 0};

/// A plot is one column per sample wide. So its width is the time that it shows: 201 samples, one every 300
/// ms (kUpdatePeriodMs of stats/system_info.cpp), are the last minute.
inline constexpr int kGraphWidth = 201;
inline constexpr int kGraphBarGap = 4;
inline constexpr int kGraphBarWidth = 18;

inline constexpr PagePoint kCpuGraph{4, 4};
inline constexpr PagePoint kCpuName{4, 6};
inline constexpr PagePoint kCpuClock{4, 26};
inline constexpr PagePoint kCpuVid{4, 46};
inline constexpr PagePoint kCpuTemperature{205, 106};

// Where drawHistoryGraph puts a graph's label.
inline constexpr PagePoint kCpuLabel{6, 85};
inline constexpr PagePoint kGpuLabel{6, 190};

inline constexpr PagePoint kGpuGraph{4, 109};
inline constexpr PagePoint kGpuName{4, 113};
inline constexpr PagePoint kGpuClock{4, 133};
inline constexpr PagePoint kGpuErrors{6, 150};
inline constexpr PagePoint kGpuTemperature{205, 210};

/// The mixer's bars stand on this row and grow upwards, one pixel per percent.
inline constexpr int kVolumeBarBottom = 104;
inline constexpr int kVolumeBarWidth = 17;
inline constexpr int kLeftVolumeBarX = 280;
inline constexpr int kRightVolumeBarX = 300;
inline constexpr PageRect kLeftChannelHighlight{277, 1, 22, 105};
inline constexpr PageRect kRightChannelHighlight{297, 1, 22, 105};
inline constexpr PagePoint kVolumeFigure{253, 48};

inline constexpr PagePoint kMicrophoneIcon{232, 112};
inline constexpr PagePoint kSpeakerIcon{256, 112};
inline constexpr PagePoint kBatteryIcon{274, 112};
inline constexpr PagePoint kMailIcon{235, 155};
inline constexpr PagePoint kMailCount{270, 154};
inline constexpr PagePoint kClock{160, 225};

/// The plot and its bar.
constexpr PageRect graphRect(PagePoint topLeft) {
    return {topLeft.x, topLeft.y, kGraphWidth + kGraphBarGap + kGraphBarWidth, Panelix::kPlotHeightPx};
}

constexpr PageRect volumeBar(int x, int percent) {
    const Panelix::LcdRows rows = Panelix::barRows(kVolumeBarBottom, percent);
    return {x, rows.top, kVolumeBarWidth, rows.height};
}

static_assert(isOnScreen(graphRect(kCpuGraph)) && isOnScreen(graphRect(kGpuGraph)));
static_assert(isOnScreen(volumeBar(kLeftVolumeBarX, 100)) && isOnScreen(volumeBar(kRightVolumeBarX, 100)));
static_assert(isOnScreen(kLeftChannelHighlight) && isOnScreen(kRightChannelHighlight));
static_assert(isOnScreen(kCpuName) && isOnScreen(kCpuClock) && isOnScreen(kCpuVid) &&
              isOnScreen(kCpuTemperature));
static_assert(isOnScreen(kGpuName) && isOnScreen(kGpuClock) && isOnScreen(kGpuErrors) &&
              isOnScreen(kGpuTemperature));
static_assert(isOnScreen(kVolumeFigure) && isOnScreen(kMailCount) && isOnScreen(kClock));
// The icons' sizes are the artwork's: 25, 18 and 42 x 37 for the upper row, 34 x 22 for the mail.
static_assert(isOnScreen(PageRect{kMicrophoneIcon.x, kMicrophoneIcon.y, 25, 37}) &&
              isOnScreen(PageRect{kSpeakerIcon.x, kSpeakerIcon.y, 18, 37}) &&
              isOnScreen(PageRect{kBatteryIcon.x, kBatteryIcon.y, 42, 37}) &&
              isOnScreen(PageRect{kMailIcon.x, kMailIcon.y, 34, 22}));

}  // namespace MainPageLayout
