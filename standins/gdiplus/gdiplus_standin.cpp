#include <windows.h>

#include <gdiplus.h>

#include <cstddef>

namespace {

int bitmapWidth = 0;
int bitmapHeight = 0;

}  // namespace

// The .def file gives these functions GDI+'s names.
extern "C" {

/// Whatever a caller passes: with x64's calling convention it stays the caller's.
int answerNotInitialized() noexcept {
    return Gdiplus::GdiplusNotInitialized;
}

/// Nothing is done all the same: what a call is to give back stays as the caller left it.
int answerOk() noexcept {
    return Gdiplus::Ok;
}

int answerOutOfMemory() noexcept {
    return Gdiplus::OutOfMemory;
}

int startUp(ULONG_PTR* token) noexcept {
    *token = 1;
    return Gdiplus::Ok;
}

int refuseToStart() noexcept {
    return Gdiplus::UnsupportedGdiplusVersion;
}

void doNothing() noexcept {}

void* allocate(std::size_t bytes) noexcept {
    return HeapAlloc(GetProcessHeap(), 0, bytes);
}

void* allocateNothing(std::size_t) noexcept {
    return nullptr;
}

/// Tells createBitmap the size of the bitmaps that it makes, in pixels.
void setBitmapSize(int width, int height) noexcept {
    bitmapWidth = width;
    bitmapHeight = height;
}

/// Whatever the image: there is none.
int createBitmap(void*, HBITMAP* bitmap, Gdiplus::ARGB) noexcept {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = bitmapWidth;
    info.bmiHeader.biHeight = bitmapHeight;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* pixels = nullptr;
    *bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
    return *bitmap != nullptr ? Gdiplus::Ok : Gdiplus::Win32Error;
}

void release(void* block) noexcept {
    HeapFree(GetProcessHeap(), 0, block);
}
}
