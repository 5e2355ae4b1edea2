#include "standins/protected_key.h"

namespace Standins {

namespace {

bool enablePrivilege(const wchar_t* name) noexcept {
    Panelix::UniqueHandle token;
    TOKEN_PRIVILEGES privileges{};
    privileges.PrivilegeCount = 1;
    privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    return OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES, token.put()) != FALSE &&
           LookupPrivilegeValueW(nullptr, name, &privileges.Privileges[0].Luid) != FALSE &&
           AdjustTokenPrivileges(token.get(), FALSE, &privileges, 0, nullptr, nullptr) != FALSE &&
           // It succeeds as well when the token does not have the privilege.
           GetLastError() == ERROR_SUCCESS;
}

LSTATUS open(HKEY root, const std::wstring& path, DWORD options, Panelix::UniqueHkey& key) noexcept {
    return RegCreateKeyExW(
        root, path.c_str(), 0, nullptr, options, KEY_READ | KEY_WRITE, nullptr, key.put(), nullptr);
}

}  // namespace

Panelix::UniqueHkey openForWriting(HKEY root, const std::wstring& path) noexcept {
    Panelix::UniqueHkey key;
    if (open(root, path, REG_OPTION_NON_VOLATILE, key) == ERROR_ACCESS_DENIED) {
        return openForRestoring(root, path);
    }
    return key;
}

Panelix::UniqueHkey openForRestoring(HKEY root, const std::wstring& path) noexcept {
    Panelix::UniqueHkey key;
    // The one privilege gives the right to write, the other one the right to read.
    if (enablePrivilege(SE_RESTORE_NAME) && enablePrivilege(SE_BACKUP_NAME)) {
        open(root, path, REG_OPTION_BACKUP_RESTORE, key);
    }
    return key;
}

}  // namespace Standins
