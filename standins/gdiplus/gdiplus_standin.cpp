#include <windows.h>

#include <gdiplus.h>

#include <cstddef>

// The .def file gives these functions GDI+'s names.
extern "C" {

/// Whatever a caller passes: with x64's calling convention it stays the caller's.
int answerNotInitialized() noexcept {
    return Gdiplus::GdiplusNotInitialized;
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

void release(void* block) noexcept {
    HeapFree(GetProcessHeap(), 0, block);
}
}
