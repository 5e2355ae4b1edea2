#pragma once

#include <windows.h>

#include <string>

#include "framework/core/exported_function.h"
#include "framework/core/unique_resource.h"

/// One of the stand-in libraries, loaded for a test.
class LoadedLcdSdk {
public:
    explicit LoadedLcdSdk(const std::wstring& path) : module_(LoadLibraryW(path.c_str())) {}

    bool isLoaded() const { return static_cast<bool>(module_); }

    /// The export of that name under the function type given, or null when the library lacks it.
    template <typename Function>
    Function* find(const char* name) const {
        return Panelix::exportedFunction<Function>(module_.get(), name);
    }

private:
    Panelix::UniqueModule module_;
};
