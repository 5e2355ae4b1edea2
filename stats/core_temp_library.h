#pragma once

#include <windows.h>

#include <memory>

#include "framework/core/unique_resource.h"
#include "stats/core_temp_entries.h"

/// Core Temp's reader library. It exists only with all of its entries.
class CoreTempLibrary {
public:
    /// Loads the library from beside the program or from the system folder. Null when it is not there or
    /// lacks an entry. Searches the disk: not for every pass.
    static std::unique_ptr<const CoreTempLibrary> load();

    /// The library's file alone, whatever it exports. Empty when it does not load; the reason is the thread's
    /// last error then.
    static Panelix::UniqueModule loadModule();

    /// What the file exports. For as long as it is loaded.
    static CoreTempExports exportsOf(HMODULE module);

    const CoreTempEntries& entries() const { return entries_; }

private:
    CoreTempLibrary() = default;

    Panelix::UniqueModule module_;
    CoreTempEntries entries_;
};
