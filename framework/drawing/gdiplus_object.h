#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <memory>
#include <new>
#include <utility>

namespace Panelix {

/// A GDI+ wrapper object on GDI+'s own heap, from which its delete expects it; null when that heap gives
/// nothing. A plain new expression takes the heap for one that throws and constructs at address null.
template <typename Object, typename... Arguments>
std::unique_ptr<Object> makeGdiplusObject(Arguments&&... arguments) {
    void* memory = Gdiplus::DllExports::GdipAlloc(sizeof(Object));
    if (memory == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<Object>(::new (memory) Object(std::forward<Arguments>(arguments)...));
}

}  // namespace Panelix
