#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <stdexcept>

namespace Standins {

/// GDI+ for as long as the object lives; it must outlive every GDI+ object. Throws std::runtime_error when
/// GDI+ does not start.
class GdiplusSession {
public:
    GdiplusSession() {
        const Gdiplus::GdiplusStartupInput input;
        if (Gdiplus::GdiplusStartup(&token_, &input, nullptr) != Gdiplus::Ok) {
            throw std::runtime_error("GDI+ does not start");
        }
    }
    ~GdiplusSession() { Gdiplus::GdiplusShutdown(token_); }
    GdiplusSession(const GdiplusSession&) = delete;
    GdiplusSession& operator=(const GdiplusSession&) = delete;

private:
    ULONG_PTR token_ = 0;
};

}  // namespace Standins
