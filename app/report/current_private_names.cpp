#include <windows.h>

#include <shlobj.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "app/report/private_names.h"
#include "framework/core/exported_function.h"
#include "framework/core/unique_resource.h"
#include "stats/ansi_text.h"

namespace {

using Names = std::vector<std::wstring>;

/// Longest path that Windows has.
constexpr DWORD kPathCapacity = 32'768;
constexpr wchar_t kProfilesKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";
/// How the identifiers of people's accounts begin: on the machine or in a domain, and in the cloud. The
/// others are those of services.
constexpr std::wstring_view kPeople[] = {L"S-1-5-21-", L"S-1-12-1-"};

void add(Names& list, std::wstring_view text) {
    if (!text.empty() && std::find(list.begin(), list.end(), text) == list.end()) {
        list.emplace_back(text);
    }
}

void sortLongestFirst(Names& list) {
    std::sort(list.begin(), list.end(), [](const std::wstring& one, const std::wstring& other) {
        return one.size() > other.size();
    });
}

/// What registry values that are read in the ANSI code page make of the text.
std::wstring throughAnsi(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    // No character takes more bytes than four in any code page.
    std::string bytes(text.size() * 4, '\0');
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(
        CP_ACP, 0, text.data(), length, bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr)));
    return wideFromAnsi(bytes);
}

/// The text with accents as characters of their own, as some devices write it.
std::wstring withSeparateAccents(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    std::wstring result(text.size() * 4, L'\0');
    result.resize(static_cast<std::size_t>(
        FoldStringW(MAP_COMPOSITE, text.data(), length, result.data(), static_cast<int>(result.size()))));
    return result;
}

void addName(Names& list, std::wstring_view name) {
    add(list, name);
    add(list, throughAnsi(name));
    add(list, withSeparateAccents(name));
}

/// The name and each of its words: a device may be called by the given name alone.
void addPerson(Names& list, const std::wstring& name) {
    const auto isLetter = [](wchar_t character) { return IsCharAlphaNumericW(character) != FALSE; };
    addName(list, name);
    for (auto end = name.begin(); end != name.end();) {
        const auto begin = std::find_if(end, name.end(), isLetter);
        end = std::find_if_not(begin, name.end(), isLetter);
        addName(list, std::wstring_view(begin, end));
    }
}

/// The path in another form; empty when Windows has none.
template <typename Convert>
std::wstring converted(const std::wstring& path, Convert* convert) {
    std::wstring result(kPathCapacity, L'\0');
    result.resize(std::min(convert(path.c_str(), result.data(), kPathCapacity), kPathCapacity));
    return result;
}

std::wstring environmentText(const wchar_t* name) {
    std::wstring text(kPathCapacity, L'\0');
    const DWORD length = GetEnvironmentVariableW(name, text.data(), kPathCapacity);
    text.resize(length < kPathCapacity ? length : 0);
    return text;
}

std::wstring withoutSlashAtEnd(std::wstring_view path) {
    return std::wstring(path.substr(0, path.find_last_not_of(L"\\/") + 1));
}

std::wstring parentOf(const std::wstring& path) {
    const std::size_t slash = path.find_last_of(L"\\/");
    return slash == std::wstring::npos ? std::wstring() : withoutSlashAtEnd(path.substr(0, slash));
}

/// Empty for the root of a drive.
std::wstring lastNameOf(const std::wstring& path) {
    const std::wstring name = path.substr(path.find_last_of(L"\\/") + 1);
    return name.ends_with(L':') ? std::wstring() : name;
}

/// Every form of the path but roots of drives, which are no profiles.
Names formsOf(const std::wstring& path) {
    Names forms;
    for (const std::wstring& form :
         {path, converted(path, GetLongPathNameW), converted(path, GetShortPathNameW), throughAnsi(path)}) {
        const std::wstring folder = withoutSlashAtEnd(form);
        if (!lastNameOf(folder).empty()) {
            add(forms, folder);
        }
    }
    return forms;
}

/// The profile of any user of the machine.
void addProfile(PrivateNames& names, const std::wstring& path) {
    for (const std::wstring& folder : formsOf(path)) {
        add(names.usersFolders, lastNameOf(parentOf(folder)));
        addPerson(names.users, lastNameOf(folder));
    }
}

void addOwnProfile(PrivateNames& names, const std::wstring& path) {
    addProfile(names, path);
    for (const std::wstring& folder : formsOf(path)) {
        add(names.profileFolders, folder);
    }
}

bool isPersons(std::wstring_view account) {
    return std::any_of(std::begin(kPeople), std::end(kPeople), [&](std::wstring_view beginning) {
        return account.starts_with(beginning);
    });
}

std::wstring profileOf(HKEY profiles, const wchar_t* account) {
    std::wstring path(kPathCapacity, L'\0');
    auto bytes = static_cast<DWORD>(path.size() * sizeof(wchar_t));
    // With what stands there in percent signs expanded.
    return RegGetValueW(
               profiles, account, L"ProfileImagePath", RRF_RT_REG_SZ, nullptr, path.data(), &bytes) ==
                   ERROR_SUCCESS
               ? std::wstring(path.c_str())
               : std::wstring();
}

/// Those of all people who have ever worked on the machine.
void addAllProfiles(PrivateNames& names) {
    Panelix::UniqueHkey profiles;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kProfilesKey, 0, KEY_READ, profiles.put()) != ERROR_SUCCESS) {
        return;
    }
    // Longer than any name of a key.
    std::array<wchar_t, 256> account{};
    auto length = static_cast<DWORD>(account.size());
    for (DWORD index = 0;
         RegEnumKeyExW(profiles.get(), index, account.data(), &length, nullptr, nullptr, nullptr, nullptr) ==
         ERROR_SUCCESS;
         ++index) {
        if (isPersons(account.data())) {
            addProfile(names, profileOf(profiles.get(), account.data()));
        }
        length = static_cast<DWORD>(account.size());
    }
}

/// The name that people know the user by; empty when the account has none.
std::wstring fullName() {
    constexpr int kNameDisplay = 3;
    using GetName = BOOLEAN WINAPI(int format, wchar_t* name, ULONG* characters);
    const Panelix::UniqueModule library(
        LoadLibraryExW(L"secur32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
    auto* const getName = Panelix::exportedFunction<GetName>(library.get(), "GetUserNameExW");
    std::array<wchar_t, 1024> name{};
    auto length = static_cast<ULONG>(name.size());
    return getName != nullptr && getName(kNameDisplay, name.data(), &length) != FALSE
               ? std::wstring(name.data())
               : std::wstring();
}

std::wstring accountName() {
    std::array<wchar_t, 257> name{};
    auto length = static_cast<DWORD>(name.size());
    return GetUserNameW(name.data(), &length) != FALSE ? std::wstring(name.data()) : std::wstring();
}

std::wstring computerName(COMPUTER_NAME_FORMAT format) {
    std::array<wchar_t, 257> name{};
    auto length = static_cast<DWORD>(name.size());
    return GetComputerNameExW(format, name.data(), &length) != FALSE ? std::wstring(name.data())
                                                                     : std::wstring();
}

}  // namespace

PrivateNames currentPrivateNames() {
    PrivateNames names;
    addOwnProfile(names, environmentText(L"USERPROFILE"));
    std::array<wchar_t, MAX_PATH> folder{};
    if (SHGetFolderPathW(nullptr, CSIDL_PROFILE, nullptr, SHGFP_TYPE_CURRENT, folder.data()) == S_OK) {
        addOwnProfile(names, folder.data());
    }
    addAllProfiles(names);
    for (const std::wstring& name : {accountName(), environmentText(L"USERNAME"), fullName()}) {
        addPerson(names.users, name);
    }
    for (const COMPUTER_NAME_FORMAT format : {ComputerNameNetBIOS,
                                              ComputerNameDnsFullyQualified,
                                              ComputerNameDnsHostname,
                                              ComputerNameDnsDomain}) {
        addName(names.computers, computerName(format));
    }
    for (const wchar_t* variable : {L"USERDOMAIN", L"USERDNSDOMAIN"}) {
        addName(names.computers, environmentText(variable));
    }
    for (Names* list : {&names.profileFolders, &names.users, &names.computers}) {
        sortLongestFirst(*list);
    }
    return names;
}
