#include "stats/unread_mail.h"

#include <windows.h>

#include <algorithm>
#include <limits>

#include "framework/core/unique_resource.h"

namespace {

constexpr std::int32_t kUnavailable = -1;
constexpr DWORD kNameLength = 1024;

Panelix::UniqueHkey openKey(HKEY parent, const wchar_t* path) {
    Panelix::UniqueHkey key;
    if (RegOpenKeyExW(parent, path, 0, KEY_READ, key.put()) != ERROR_SUCCESS) {
        return {};
    }
    return key;
}

}  // namespace

std::int32_t readUnreadMail() {
    const Panelix::UniqueHkey accounts = openKey(HKEY_CURRENT_USER, kUnreadMailKey);
    if (!accounts) {
        return kUnavailable;
    }
    std::uint64_t sum = 0;
    wchar_t name[kNameLength];
    // Set once, each call leaves in them what the next one gets as its limit.
    DWORD nameLength = kNameLength;
    DWORD countSize = sizeof(DWORD);
    for (DWORD index = 0;
         RegEnumKeyExW(accounts.get(), index, name, &nameLength, nullptr, nullptr, nullptr, nullptr) ==
         ERROR_SUCCESS;
         ++index) {
        const Panelix::UniqueHkey account = openKey(accounts.get(), name);
        if (!account) {
            continue;
        }
        DWORD count = 0;
        if (RegQueryValueExW(account.get(),
                             kUnreadMailCount,
                             nullptr,
                             nullptr,
                             reinterpret_cast<BYTE*>(&count),
                             &countSize) != ERROR_SUCCESS) {
            return kUnavailable;
        }
        sum += count;
    }
    return static_cast<std::int32_t>(std::min<std::uint64_t>(sum, std::numeric_limits<std::int32_t>::max()));
}
