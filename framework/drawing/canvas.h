#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <cstdint>
#include <map>
#include <string>

#include "framework/core/transition_kind.h"
#include "framework/drawing/image.h"
#include "framework/drawing/lcd_frame.h"

namespace Panelix {

/// A started GDI+, ended by the destructor. When it does not start, every GDI+ call of the process fails with
/// a status of its own, so nothing is reported here.
class GdiplusSession {
public:
    GdiplusSession();
    ~GdiplusSession();
    GdiplusSession(const GdiplusSession&) = delete;
    GdiplusSession& operator=(const GdiplusSession&) = delete;

private:
    ULONG_PTR token_ = 0;
};

/// The one 320 x 240 surface on which every frame is composed; owner of GDI+ itself and of the images loaded
/// from the program's resources. A GDI+ call that fails leaves its status in the GDI+ object and drawing goes
/// on; only what says so here throws. GUI thread only.
class Canvas {
public:
    /// Starts GDI+ and creates the surface. Never throws on a GDI+ failure: the first image load or frame
    /// conversion reports it.
    Canvas();
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    /// The image of a resource of the process module (id below 65,536), loaded at the first call and kept as
    /// long as the canvas: borrowed by the caller. `fromPng` 0 loads a bitmap resource, any other value a
    /// resource of type "PNG"; it plays no part once the id is cached. Id 0 gives null. When there is no
    /// image at all (no such PNG, or one that cannot be decoded) a message box says so and the result is
    /// null; a bitmap resource that fails to load throws SysException. In both cases a later call tries
    /// again.
    Gdiplus::Bitmap* getImage(std::uintptr_t resourceId, int fromPng);

    /// Throws SysException titled "Drawing Error" with `message`, ": " and the status text when the last
    /// canvas-level operation failed.
    void checkStatus(const std::wstring& message) const;

    /// Draws the active page, or, with a `previous` page, one step of the slide between both: `progress` runs
    /// from 0 to 1. Either bitmap may be null. False when a drawing failed; the failure stays in the
    /// surface's graphics object.
    bool composePages(Gdiplus::Bitmap* current,
                      Gdiplus::Bitmap* previous,
                      float progress,
                      TransitionKind direction);

    /// Draws the surface at (0, 0) of `target`; a failure goes to target's last status.
    void presentTo(Gdiplus::Graphics& target);

    /// The surface as the LCD takes it. Throws SysException ("Drawing Error") when the surface cannot be
    /// read. The buffer belongs to the caller.
    LcdFrame toLcdFrame();

    /// Saves the surface as a BMP file in the user's Documents folder. Failures are reported in a modal box;
    /// never throws. True when one was shown.
    bool saveScreenshot() noexcept;

    /// Name and meaning of a GDI+ status, e.g. "Ok: Indicates that ...".
    static std::wstring statusText(int status);

private:
    /// Declared first: GDI+ ends after everything below is gone.
    GdiplusSession session_;
    Gdiplus::Status lastStatus_ = Gdiplus::Ok;
    Gdiplus::Bitmap surface_;
    /// Draws on the surface.
    Gdiplus::Graphics graphics_;
    std::map<std::uintptr_t, Image> imageCache_;
};

}  // namespace Panelix
