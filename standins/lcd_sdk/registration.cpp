#include "standins/lcd_sdk/registration.h"

#include <windows.h>

#include <optional>
#include <vector>

#include "framework/core/lcd_sdk_abi.h"
#include "framework/core/unique_resource.h"

namespace Standins {

namespace {

constexpr wchar_t kForceHint[] = L"\nThat is not this one, so it stays. --force does it all the same.";

// The class's key, in which the library's key stands.
std::wstring classKey() {
    const std::wstring key = Panelix::LcdSdk::kServerBinaryKey;
    return key.substr(0, key.rfind(L'\\'));
}

std::optional<std::wstring> registeredLibrary() {
    DWORD bytes = 0;
    const auto read = [&](void* data) {
        return RegGetValueW(HKEY_LOCAL_MACHINE,
                            Panelix::LcdSdk::kServerBinaryKey,
                            nullptr,
                            RRF_RT_REG_SZ,
                            nullptr,
                            data,
                            &bytes);
    };
    if (read(nullptr) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    std::vector<wchar_t> text(bytes / sizeof(wchar_t) + 1);
    if (read(text.data()) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return std::wstring(text.data());
}

bool isSamePath(const std::wstring& one, const std::wstring& other) {
    return CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_EQUAL;
}

RegistrationOutcome failure(LSTATUS status) {
    if (status == ERROR_ACCESS_DENIED) {
        return {false,
                L"Access to HKEY_LOCAL_MACHINE was denied. Run this from a console that was started as "
                L"administrator."};
    }
    return {false, L"The registry refused the change (error " + std::to_wstring(status) + L")."};
}

LSTATUS writeRegistration(const std::wstring& path) {
    Panelix::UniqueHkey key;
    const LSTATUS status = RegCreateKeyExW(HKEY_LOCAL_MACHINE,
                                           Panelix::LcdSdk::kServerBinaryKey,
                                           0,
                                           nullptr,
                                           0,
                                           KEY_SET_VALUE,
                                           nullptr,
                                           key.put(),
                                           nullptr);
    if (status != ERROR_SUCCESS) {
        return status;
    }
    const auto bytes = static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t));
    return RegSetValueExW(key.get(), nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(path.c_str()), bytes);
}

// The class's key goes too when nothing else is in it.
LSTATUS removeRegistration() {
    const LSTATUS status = RegDeleteKeyW(HKEY_LOCAL_MACHINE, Panelix::LcdSdk::kServerBinaryKey);
    DWORD subkeys = 0;
    DWORD values = 0;
    {
        Panelix::UniqueHkey key;
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, classKey().c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS ||
            RegQueryInfoKeyW(key.get(),
                             nullptr,
                             nullptr,
                             nullptr,
                             &subkeys,
                             nullptr,
                             nullptr,
                             &values,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr) != ERROR_SUCCESS) {
            return status;
        }
    }
    if (subkeys == 0 && values == 0) {
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, classKey().c_str());
    }
    return status;
}

}  // namespace

RegistrationOutcome registerLibrary(const std::wstring& path, bool force) {
    const std::optional<std::wstring> present = registeredLibrary();
    if (present.has_value() && !isSamePath(*present, path) && !force) {
        return {false, L"An LCD library is registered already: " + *present + kForceHint};
    }
    const LSTATUS status = writeRegistration(path);
    if (status != ERROR_SUCCESS) {
        return failure(status);
    }
    return {true, L"Registered as the LCD library: " + path};
}

RegistrationOutcome unregisterLibrary(const std::wstring& path, bool force) {
    const std::optional<std::wstring> present = registeredLibrary();
    if (!present.has_value()) {
        return {true, L"No LCD library is registered."};
    }
    if (!isSamePath(*present, path) && !force) {
        return {false, L"The LCD library that is registered: " + *present + kForceHint};
    }
    const LSTATUS status = removeRegistration();
    if (status != ERROR_SUCCESS) {
        return failure(status);
    }
    return {true, L"No longer registered: " + *present};
}

}  // namespace Standins
