#include "app/library_loading.h"

#include <windows.h>

void prepareLibraryLoading() noexcept {
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32 | LOAD_LIBRARY_SEARCH_USER_DIRS);
    SetErrorMode(GetErrorMode() | SEM_FAILCRITICALERRORS);
}
