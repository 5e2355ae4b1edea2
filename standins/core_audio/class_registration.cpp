#include "standins/core_audio/class_registration.h"

#include <string>
#include <vector>

#include "framework/core/unique_resource.h"
#include "standins/protected_key.h"

namespace Standins {

namespace {

constexpr const wchar_t* kClassKeys[] = {
    // Device enumerator.
    L"SOFTWARE\\Classes\\CLSID\\{BCDE0395-E52F-467C-8E3D-C4579291692E}",
    // Policy configuration.
    L"SOFTWARE\\Classes\\CLSID\\{294935CE-F637-4E7C-A41B-AB255460B862}",
};
constexpr wchar_t kServerKey[] = L"InprocServer32";

/// A value of the server's key and where its former content is kept meanwhile.
struct ReplacedValue {
    const wchar_t* name;
    const wchar_t* keptName;
};

constexpr ReplacedValue kReplacedValues[] = {
    {nullptr, L"KelvaroReplacedServer"},
    {L"ThreadingModel", L"KelvaroReplacedThreadingModel"},
};
/// Present while the stand-in is registered.
constexpr wchar_t kReplacedMark[] = L"KelvaroReplaced";

struct Value {
    DWORD type = REG_NONE;
    std::vector<BYTE> bytes;
    bool exists = false;
};

Value readValue(HKEY key, const wchar_t* name) {
    Value value;
    DWORD size = 0;
    if (RegQueryValueExW(key, name, nullptr, &value.type, nullptr, &size) != ERROR_SUCCESS) {
        return value;
    }
    value.bytes.resize(size);
    value.exists =
        RegQueryValueExW(key, name, nullptr, &value.type, value.bytes.data(), &size) == ERROR_SUCCESS;
    return value;
}

bool writeValue(HKEY key, const wchar_t* name, const Value& value) noexcept {
    return RegSetValueExW(
               key, name, 0, value.type, value.bytes.data(), static_cast<DWORD>(value.bytes.size())) ==
           ERROR_SUCCESS;
}

Value textValue(const std::wstring& text) {
    const auto* const bytes = reinterpret_cast<const BYTE*>(text.c_str());
    return {REG_SZ, std::vector<BYTE>(bytes, bytes + (text.size() + 1) * sizeof(wchar_t)), true};
}

// A value that was not there has nothing kept for it.
bool keepValues(HKEY key) {
    for (const ReplacedValue& replaced : kReplacedValues) {
        const Value value = readValue(key, replaced.name);
        if (value.exists && !writeValue(key, replaced.keptName, value)) {
            return false;
        }
    }
    return writeValue(key, kReplacedMark, textValue(L"yes"));
}

bool registerClass(const std::wstring& classKey, const wchar_t* path) {
    const Panelix::UniqueHkey key = openForWriting(HKEY_LOCAL_MACHINE, classKey + L"\\" + kServerKey);
    if (!key) {
        return false;
    }
    if (!readValue(key.get(), kReplacedMark).exists && !keepValues(key.get())) {
        return false;
    }
    return writeValue(key.get(), kReplacedValues[0].name, textValue(path)) &&
           writeValue(key.get(), kReplacedValues[1].name, textValue(L"Both"));
}

bool restoreValue(HKEY key, const ReplacedValue& replaced) {
    const Value kept = readValue(key, replaced.keptName);
    if (!kept.exists) {
        const LSTATUS status = RegDeleteValueW(key, replaced.name);
        return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
    }
    return writeValue(key, replaced.name, kept) && RegDeleteValueW(key, replaced.keptName) == ERROR_SUCCESS;
}

bool unregisterClass(const std::wstring& classKey) {
    const std::wstring path = classKey + L"\\" + kServerKey;
    Panelix::UniqueHkey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS ||
        !readValue(key.get(), kReplacedMark).exists) {
        return true;
    }
    key = openForWriting(HKEY_LOCAL_MACHINE, path);
    if (!key) {
        return false;
    }
    const bool wasThere = readValue(key.get(), kReplacedValues[0].keptName).exists;
    for (const ReplacedValue& replaced : kReplacedValues) {
        if (!restoreValue(key.get(), replaced)) {
            return false;
        }
    }
    if (RegDeleteValueW(key.get(), kReplacedMark) != ERROR_SUCCESS) {
        return false;
    }
    key.reset();
    return wasThere || RegDeleteTreeW(HKEY_LOCAL_MACHINE, classKey.c_str()) == ERROR_SUCCESS;
}

}  // namespace

bool registerClasses(const wchar_t* path) noexcept {
    bool done = true;
    for (const wchar_t* classKey : kClassKeys) {
        done = registerClass(classKey, path) && done;
    }
    return done;
}

bool unregisterClasses() noexcept {
    bool done = true;
    for (const wchar_t* classKey : kClassKeys) {
        done = unregisterClass(classKey) && done;
    }
    return done;
}

}  // namespace Standins
