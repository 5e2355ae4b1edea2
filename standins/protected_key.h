#pragma once

#include <windows.h>

#include <string>

#include "framework/core/unique_resource.h"

namespace Standins {

/// Opens a key for reading and writing, and makes it when it is not there; empty when the registry refuses.
/// Windows' own classes belong to its installer, and not even an administrator may write them as others do.
Panelix::UniqueHkey openForWriting(HKEY root, const std::wstring& path) noexcept;

/// What openForWriting() falls back on: the right to restore backups, which stands above what the key's owner
/// allows. Only administrators have it.
Panelix::UniqueHkey openForRestoring(HKEY root, const std::wstring& path) noexcept;

}  // namespace Standins
