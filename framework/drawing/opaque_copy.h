#pragma once

#include <windows.h>

#include <gdiplus.h>

namespace Panelix {

/// Copies the pixels of one 320 x 240 bitmap to another when they are opaque everywhere, which is what
/// drawing the one on the other would give, at a fraction of its time. False when some are not, or when a
/// call of GDI+ failed: drawing is then still to be done. The statuses of both bitmaps are read and so reset.
bool copyIfOpaque(Gdiplus::Bitmap& from, Gdiplus::Bitmap& to);

}  // namespace Panelix
