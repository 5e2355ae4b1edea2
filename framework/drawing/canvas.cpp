#include "framework/drawing/canvas.h"

#include <utility>

#include "framework/drawing/gdiplus_object.h"
#include "framework/drawing/opaque_copy.h"
#include "framework/drawing/slide.h"
#include "framework/drawing/status_text.h"
#include "framework/drawing/surface_settings.h"
#include "framework/drawing/sys_exception.h"

namespace Panelix {

GdiplusSession::GdiplusSession() {
    // The input's defaults: version 1, no debug callback, own background thread, no external codecs.
    const Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&token_, &input, nullptr) != Gdiplus::Ok) {
        token_ = 0;
    }
}

GdiplusSession::~GdiplusSession() {
    if (token_ != 0) {
        Gdiplus::GdiplusShutdown(token_);
    }
}

Canvas::Canvas() : surface_(kLcdWidth, kLcdHeight, PixelFormat32bppPARGB), graphics_(&surface_) {
    applySurfaceSettings(graphics_);
}

Canvas::~Canvas() {
    // In the order of their ids, which the map's own destructor does not promise.
    while (!imageCache_.empty()) {
        imageCache_.erase(imageCache_.begin());
    }
}

Gdiplus::Bitmap* Canvas::getImage(std::uintptr_t resourceId, int fromPng) {
    if (resourceId == 0) {
        return nullptr;
    }
    const auto cached = imageCache_.find(resourceId);
    if (cached != imageCache_.end()) {
        return cached->second.bitmap.get();
    }
    Image image;
    if (fromPng == 0) {
        image.bitmap = makeGdiplusObject<Gdiplus::Bitmap>(GetModuleHandleW(nullptr),
                                                          reinterpret_cast<LPCWSTR>(resourceId));
    } else {
        image = decodePngResource(resourceId);
    }
    if (image.bitmap == nullptr) {
        MessageBoxW(nullptr, L"NULL", L"Panelix Image load Error", MB_OK);
        return nullptr;
    }
    lastStatus_ = image.bitmap->GetLastStatus();
    checkStatus(L"Failed to load bitmap");
    return imageCache_.emplace(resourceId, std::move(image)).first->second.bitmap.get();
}

void Canvas::checkStatus(const std::wstring& message) const {
    if (lastStatus_ != Gdiplus::Ok) {
        throw SysException(message + L": " + statusText(lastStatus_), L"Drawing Error");
    }
}

bool Canvas::composePages(Gdiplus::Bitmap* current,
                          Gdiplus::Bitmap* previous,
                          float progress,
                          TransitionKind direction) {
    if (previous == nullptr) {
        const bool copied = current != nullptr && copyIfOpaque(*current, surface_);
        return copied || graphics_.DrawImage(current, 0, 0) == Gdiplus::Ok;
    }
    const SlideOffsets offsets = slideOffsets(progress, direction);
    const Gdiplus::Status left = graphics_.DrawImage(previous, offsets.previousX, offsets.previousY);
    const Gdiplus::Status entered = graphics_.DrawImage(current, offsets.currentX, offsets.currentY);
    return left == Gdiplus::Ok && entered == Gdiplus::Ok;
}

void Canvas::presentTo(Gdiplus::Graphics& target) {
    target.DrawImage(&surface_, 0, 0);
}

std::wstring Canvas::statusText(int status) {
    return gdiplusStatusText(status);
}

}  // namespace Panelix
