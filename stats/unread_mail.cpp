#include "stats/unread_mail.h"

#include <windows.h>

#include "framework/core/unique_resource.h"
#include "stats/unread_mail_walk.h"

namespace {

constexpr std::int32_t kUnavailable = -1;

Panelix::UniqueHkey openKey(HKEY parent, const wchar_t* path) {
    Panelix::UniqueHkey key;
    if (RegOpenKeyExW(parent, path, 0, KEY_READ, key.put()) != ERROR_SUCCESS) {
        return {};
    }
    return key;
}

/// The accounts in the registry, see sumOfUnreadMail().
class RegistryAccounts {
public:
    explicit RegistryAccounts(HKEY list) : list_(list) {}

    bool next(std::uint32_t index, std::uint32_t& nameLength) {
        DWORD length = nameLength;
        const LSTATUS status =
            RegEnumKeyExW(list_, index, name_, &length, nullptr, nullptr, nullptr, nullptr);
        nameLength = length;
        return status == ERROR_SUCCESS;
    }

    MailAccount count(std::uint32_t& count, std::uint32_t& bytes) const {
        const Panelix::UniqueHkey account = openKey(list_, name_);
        if (!account) {
            return MailAccount::Denied;
        }
        DWORD size = bytes;
        const LSTATUS status = RegQueryValueExW(
            account.get(), kUnreadMailCount, nullptr, nullptr, reinterpret_cast<BYTE*>(&count), &size);
        bytes = size;
        return status == ERROR_SUCCESS ? MailAccount::Counted : MailAccount::WithoutCount;
    }

private:
    HKEY list_;
    wchar_t name_[kMailAccountNameLength]{};
};

}  // namespace

std::int32_t readUnreadMail() {
    const Panelix::UniqueHkey list = openKey(HKEY_CURRENT_USER, kUnreadMailKey);
    if (!list) {
        return kUnavailable;
    }
    RegistryAccounts accounts(list.get());
    return sumOfUnreadMail(accounts);
}
