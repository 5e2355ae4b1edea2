#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Panelix {

/// A GDI+ bitmap together with the pixels that it borrows, if any: GDI+ keeps pointing at a caller's buffer
/// in silence, so the two live and die together.
struct Image {
    /// Premultiplied BGRA, rows top to bottom without padding; empty when GDI+ owns the pixels itself.
    std::unique_ptr<std::byte[]> pixels;
    /// Null when there is no image. Declared after the pixels, so it goes first.
    std::unique_ptr<Gdiplus::Bitmap> bitmap;
};

/// Decodes a resource of type "PNG" of the process module to 32 bits per pixel, premultiplied. COM must be
/// running on the thread. The bitmap is null when the resource is missing, is no PNG, has more or fewer than
/// one frame or no pixels, or when the decoder is not there. A failure of GDI+ itself is in the bitmap's last
/// status.
Image decodePngResource(std::uintptr_t resourceId);

}  // namespace Panelix
