#include "app/library_search.h"

#include <windows.h>

void searchLibrariesInSystemFolder() noexcept {
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32 | LOAD_LIBRARY_SEARCH_USER_DIRS);
}
