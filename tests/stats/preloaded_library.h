#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "framework/core/unique_resource.h"

/// A vendor library that is in the process already: a load by its file name alone then gives this one,
/// wherever the loader would have searched. So each test brings its own variant, and leaves no file behind.
class PreloadedLibrary {
public:
    explicit PreloadedLibrary(const std::wstring& path) : module_(LoadLibraryW(path.c_str())) {
        EXPECT_TRUE(module_) << "error " << GetLastError();
    }

private:
    Panelix::UniqueModule module_;
};
