#include "framework/core/page.h"

#include <utility>

#include "framework/drawing/lcd_frame.h"
#include "framework/drawing/surface_settings.h"

namespace Panelix {

Page::Page(std::wstring name, App* app)
    : name_(std::move(name)),
      app_(app),
      bitmap_(kLcdWidth, kLcdHeight, PixelFormat32bppPARGB),
      graphics_(&bitmap_) {
    applySurfaceSettings(graphics_);
}

Page::~Page() = default;

}  // namespace Panelix
