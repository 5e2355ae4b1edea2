#include "tests/support/documents_folder.h"

#include <windows.h>

#include <shlobj.h>

#include "tests/support/registry_override.h"

void setDocumentsFolder(const std::wstring& path) {
    const std::wstring explorer = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\";
    for (const wchar_t* key : {L"Shell Folders", L"User Shell Folders"}) {
        RegistryOverride::setText(HKEY_CURRENT_USER, explorer + key, L"Personal", path);
    }
}

bool documentsFolderIs(const std::wstring& path) {
    wchar_t folder[MAX_PATH] = L"";
    return SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT, folder)) &&
           path == folder;
}
