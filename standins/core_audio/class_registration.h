#pragma once

#include <windows.h>

namespace Standins {

/// Names the library at `path` as the server of both Core Audio classes, for every process that uses the same
/// registry. What was registered before is kept beside it. Registering twice is as good as once. Returns
/// whether the registry took it.
bool registerClasses(const wchar_t* path) noexcept;

/// Brings back what was registered before, and removes what was not there. True when there is nothing to do.
bool unregisterClasses() noexcept;

}  // namespace Standins
