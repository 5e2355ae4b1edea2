#include "framework/core/page.h"

#include <utility>

#include "framework/drawing/lcd_frame.h"
#include "framework/drawing/surface_settings.h"

namespace Panelix {

Page::Page(std::wstring name, App* app)
    : name_(std::move(name)),
      app_(app),
      bitmap_(std::make_unique<Gdiplus::Bitmap>(kLcdWidth, kLcdHeight, PixelFormat32bppPARGB)),
      graphics_(std::make_unique<Gdiplus::Graphics>(bitmap_.get())) {
    applySurfaceSettings(*graphics_);
}

Page::~Page() = default;

}  // namespace Panelix
