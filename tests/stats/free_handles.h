#pragma once

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "framework/core/unique_resource.h"

/// The greatest of the next few handles that this process would get. The system gives low numbers first, so
/// the value grows when handles are left open. It looks at several, because what is opened first and closed
/// last leaves a low number free.
inline std::uintptr_t greatestOfNextHandles() {
    std::array<Panelix::UniqueHandle, 16> handles;
    std::uintptr_t greatest = 0;
    for (Panelix::UniqueHandle& handle : handles) {
        handle.reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        greatest = std::max(greatest, reinterpret_cast<std::uintptr_t>(handle.get()));
    }
    return greatest;
}
