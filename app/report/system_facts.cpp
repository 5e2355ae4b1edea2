#include "app/report/system_facts.h"

#include <audioclient.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <iterator>
#include <vector>

#include "app/start.h"
#include "framework/core/unique_resource.h"

namespace {

using Panelix::UniqueFile;

struct NamedResult {
    HRESULT result;
    const wchar_t* name;
};

/// Core Audio's own results have no text in the system.
constexpr NamedResult kNamedResults[] = {
    {REGDB_E_CLASSNOTREG, L"REGDB_E_CLASSNOTREG"},
    {AUDCLNT_E_DEVICE_INVALIDATED, L"AUDCLNT_E_DEVICE_INVALIDATED"},
    {AUDCLNT_E_SERVICE_NOT_RUNNING, L"AUDCLNT_E_SERVICE_NOT_RUNNING"},
};

std::wstring resultName(HRESULT result) {
    for (const NamedResult& named : kNamedResults) {
        if (named.result == result) {
            return named.name;
        }
    }
    return {};
}

std::wstring systemText(DWORD code) {
    std::array<wchar_t, 512> text{};
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr,
                                        code,
                                        0,
                                        text.data(),
                                        static_cast<DWORD>(text.size()),
                                        nullptr);
    std::wstring line(text.data(), length);
    // The texts end with a line's end.
    while (!line.empty() && line.back() <= L' ') {
        line.pop_back();
    }
    return line;
}

std::wstring withText(const std::wstring& number, const std::wstring& text) {
    return text.empty() ? number : number + L": " + text;
}

UniqueFile openForLooking(const std::wstring& path) {
    return UniqueFile(CreateFileW(path.c_str(),
                                  0,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  nullptr,
                                  OPEN_EXISTING,
                                  0,
                                  nullptr));
}

/// Reads one record at a place of a file.
template <typename Record>
bool readAt(HANDLE file, LONG offset, Record& record) {
    DWORD read = 0;
    return SetFilePointer(file, offset, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER &&
           ReadFile(file, &record, sizeof(record), &read, nullptr) != FALSE && read == sizeof(record);
}

std::wstring machineName(WORD machine) {
    switch (machine) {
        case IMAGE_FILE_MACHINE_I386:
            return L"x86 (32 bits)";
        case IMAGE_FILE_MACHINE_AMD64:
            return L"x64";
        case IMAGE_FILE_MACHINE_ARM64:
            return L"ARM64";
        default:
            return L"machine " + std::to_wstring(machine);
    }
}

bool readIdentity(const std::wstring& path, BY_HANDLE_FILE_INFORMATION& identity) {
    const UniqueFile file = openForLooking(path);
    return file && GetFileInformationByHandle(file.get(), &identity) != FALSE;
}

}  // namespace

std::wstring errorText(DWORD error) {
    return withText(L"error " + std::to_wstring(error), systemText(error));
}

std::wstring resultText(HRESULT result) {
    const std::wstring name = resultName(result);
    return withText(hexText(static_cast<std::uint32_t>(result)),
                    name.empty() ? systemText(static_cast<DWORD>(result)) : name);
}

std::wstring hexText(std::uint32_t number) {
    std::array<wchar_t, 16> text{};
    std::swprintf(text.data(), text.size(), L"0x%08X", number);
    return text.data();
}

std::wstring fileVersion(const std::wstring& path) {
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), nullptr);
    if (size == 0) {
        return {};
    }
    std::vector<std::byte> record(size);
    void* found = nullptr;
    UINT length = 0;
    if (GetFileVersionInfoW(path.c_str(), 0, size, record.data()) == FALSE ||
        VerQueryValueW(record.data(), L"\\", &found, &length) == FALSE || length < sizeof(VS_FIXEDFILEINFO)) {
        return {};
    }
    const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(found);
    return std::to_wstring(HIWORD(fixed.dwFileVersionMS)) + L'.' +
           std::to_wstring(LOWORD(fixed.dwFileVersionMS)) + L'.' +
           std::to_wstring(HIWORD(fixed.dwFileVersionLS)) + L'.' +
           std::to_wstring(LOWORD(fixed.dwFileVersionLS));
}

std::wstring modulePath(HMODULE module) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

std::wstring programFolder() {
    const std::wstring program = modulePath(nullptr);
    return program.substr(0, program.find_last_of(L'\\'));
}

std::wstring systemFolder() {
    std::array<wchar_t, MAX_PATH> folder{};
    GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    return folder.data();
}

bool fileExists(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

std::wstring machineOf(const std::wstring& path) {
    struct Header {
        DWORD signature;
        IMAGE_FILE_HEADER file;
    };
    const UniqueFile file(CreateFileW(
        path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, nullptr));
    IMAGE_DOS_HEADER start{};
    Header header{};
    if (!file || !readAt(file.get(), 0, start) || start.e_magic != IMAGE_DOS_SIGNATURE ||
        !readAt(file.get(), start.e_lfanew, header) || header.signature != IMAGE_NT_SIGNATURE) {
        return {};
    }
    return machineName(header.file.Machine);
}

std::wstring loadErrorText(const std::wstring& path, DWORD error) {
    const std::wstring machine = error == ERROR_BAD_EXE_FORMAT ? machineOf(path) : std::wstring();
    return machine.empty() ? errorText(error)
                           : L"it is made for " + machine + L" and Kelvaro for x64, " + errorText(error);
}

bool isSameFile(const std::wstring& first, const std::wstring& second) {
    BY_HANDLE_FILE_INFORMATION one{};
    BY_HANDLE_FILE_INFORMATION other{};
    return readIdentity(first, one) && readIdentity(second, other) &&
           one.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
           one.nFileIndexHigh == other.nFileIndexHigh && one.nFileIndexLow == other.nFileIndexLow;
}

std::wstring versionText(const std::wstring& path) {
    const std::wstring version = fileVersion(path);
    return version.empty() ? L"no version record" : L"version " + version;
}

// The mutex is only opened: one that was made here would keep Kelvaro from starting.
bool isKelvaroRunning() {
    const Panelix::UniqueHandle instance(OpenMutexW(SYNCHRONIZE, FALSE, kInstanceMutex));
    return instance || GetLastError() != ERROR_FILE_NOT_FOUND;
}

const wchar_t* yesNo(bool yes) {
    return yes ? L"yes" : L"no";
}
