#pragma once

#include <windows.h>

namespace Panelix {

/// The function that the library exports under this name; null when it does not, or when `library` is null.
/// Without a type its address.
template <typename Function = void>
Function* exportedFunction(HMODULE library, const char* name) {
    if (library == nullptr) {
        return nullptr;
    }
    // Through void*, because the compiler rightly mistrusts a cast between function types.
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

}  // namespace Panelix
