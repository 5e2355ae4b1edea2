#include "app/report/private_names.h"

#include <windows.h>

#include <shlobj.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace {

constexpr std::wstring_view kProfile = L"%USERPROFILE%";
constexpr std::wstring_view kUser = L"<user>";
constexpr std::wstring_view kComputer = L"<computer>";
/// Longest path that Windows has.
constexpr DWORD kPathCapacity = 32'768;

/// Folders among the users' that are nobody's.
constexpr std::wstring_view kNobodys[] = {L"public", L"default", L"all users", L"default user"};

/// Names that say nothing about a person or a machine, between blanks. Hidden everywhere they would take the
/// report's own words out of it: "<user> there" for "not there", "C:\\<user>\\system32".
constexpr std::wstring_view kCommonNames =
    // Of accounts, computers and folders; those of what is put in the place of names among them.
    L" admin administrator computer default desktop files guest home laptop local notebook office owner "
    L"pc program public system system32 temp test user userprofile users windows work "
    // Of what the report is about.
    L" amd atiadlxx audio battery bytes card clock code controller core cpu default definition device "
    L"devices digital display driver dll exe figure figures gamepad geforce getcoretempinfo gpu hardware "
    L"headphones headset high hklm intel kelvaro kelvaroreport keyboard khz lcd level library line lines "
    L"list machine mail mapping memory mib microphone microphones mmdevapi mobile monitor nvidia output "
    L"program radeon realtek record report result serverbinary session software sound speaker speakers "
    L"status usb version volume wine "
    // Of its sentences.
    L" active all and at available be been before but called cannot classes clsid connected could count "
    L"does empty error fails false file finds first for found free full gone had has here id in "
    L"installed is it its left loaded longer looked low may medium missing mode module name names needed "
    L"neither nimh no none not of on one only open or path read registered run runs say second send set "
    L"share shared shorter shows start text than that the them there this to tried true type under "
    L"unknown used want what which wired with without works yes ";

/// One form for comparing, as long as the text: small letters, and one kind of slash.
std::wstring comparable(std::wstring_view text) {
    std::wstring form(text);
    // Windows' own rule for file names would be capitals; this maps letter by letter as well.
    CharLowerBuffW(form.data(), static_cast<DWORD>(form.size()));
    std::replace(form.begin(), form.end(), L'/', L'\\');
    return form;
}

bool isPartOfWord(wchar_t character) {
    return character == L'_' || IsCharAlphaNumericW(character) != FALSE;
}

bool isSlash(wchar_t character) {
    return character == L'\\' || character == L'/';
}

/// What cannot stand in a file's name ends a folder's name.
bool endsName(wchar_t character) {
    return isSlash(character) || std::wstring_view(L"\"<>|:*?;,").find(character) != std::wstring_view::npos;
}

bool endsNameAt(std::wstring_view text, std::size_t position) {
    return position >= text.size() || endsName(text[position]) || text[position] == L'\'';
}

bool isWholeWord(std::wstring_view text, std::size_t begin, std::size_t length) {
    const std::size_t end = begin + length;
    return (begin == 0 || !isPartOfWord(text[begin - 1])) && (end >= text.size() || !isPartOfWord(text[end]));
}

/// Replaces every place of `what` that `isMeant(text, position)` takes.
template <typename IsMeant>
void replaceAll(std::wstring& text,
                std::wstring_view what,
                std::wstring_view replacement,
                const IsMeant& isMeant) {
    const std::wstring sought = comparable(what);
    if (sought.empty()) {
        return;
    }
    std::size_t position = 0;
    while ((position = comparable(text).find(sought, position)) != std::wstring::npos) {
        if (isMeant(text, position)) {
            text.replace(position, sought.size(), replacement);
            position += replacement.size();
        } else {
            ++position;
        }
    }
}

void hideProfile(std::wstring& text, std::wstring_view folder) {
    replaceAll(text, folder, kProfile, [&](std::wstring_view whole, std::size_t position) {
        return endsNameAt(whole, position + folder.size());
    });
}

/// Names of the folders right below `folder`, but for those that are nobody's.
void hideOtherProfiles(std::wstring& text, std::wstring_view folder) {
    const std::wstring sought = comparable(folder) + L'\\';
    std::size_t position = 0;
    while ((position = comparable(text).find(sought, position)) != std::wstring::npos) {
        position += sought.size();
        const auto begin = text.begin() + static_cast<std::ptrdiff_t>(position);
        // A question mark is what the ANSI code page makes of a letter that it lacks.
        const auto end = std::find_if(
            begin, text.end(), [](wchar_t character) { return endsName(character) && character != L'?'; });
        const std::wstring name = comparable(std::wstring(begin, end));
        if (!name.empty() &&
            std::find(std::begin(kNobodys), std::end(kNobodys), name) == std::end(kNobodys)) {
            text.replace(begin, end, kUser);
        }
    }
}

/// Whether a name is a common one, a number, or a single letter of ASCII, such as that of a drive.
bool saysNothing(std::wstring_view name) {
    const auto isDigit = [](wchar_t character) { return character >= L'0' && character <= L'9'; };
    return (name.size() == 1 && name.front() < L'\x80') || std::all_of(name.begin(), name.end(), isDigit) ||
           kCommonNames.find(L' ' + comparable(name) + L' ') != std::wstring_view::npos;
}

void hideWord(std::wstring& text, std::wstring_view word, std::wstring_view replacement) {
    // What was put there by this is common as well, and not replaced again.
    if (!saysNothing(word)) {
        replaceAll(text, word, replacement, [&](std::wstring_view whole, std::size_t position) {
            return isWholeWord(whole, position, word.size());
        });
    }
}

void add(std::vector<std::wstring>& list, std::wstring_view text) {
    while (!text.empty() && isSlash(text.back())) {
        text.remove_suffix(1);
    }
    // The root of a drive is nobody's profile, and hides nothing.
    if (text.size() > 2 && std::find(list.begin(), list.end(), text) == list.end()) {
        list.emplace_back(text);
    }
}

void addName(std::vector<std::wstring>& list, std::wstring_view name) {
    if (!name.empty() && std::find(list.begin(), list.end(), name) == list.end()) {
        list.emplace_back(name);
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

std::wstring parentOf(const std::wstring& path) {
    const std::size_t slash = path.find_last_of(L"\\/");
    return slash == std::wstring::npos ? std::wstring() : path.substr(0, slash);
}

std::wstring lastNameOf(const std::wstring& path) {
    const std::size_t slash = path.find_last_of(L"\\/");
    return slash == std::wstring::npos ? path : path.substr(slash + 1);
}

void addProfile(PrivateNames& names, const std::wstring& folder) {
    if (folder.empty()) {
        return;
    }
    add(names.profileFolders, folder);
    add(names.profileFolders, converted(folder, GetLongPathNameW));
    add(names.profileFolders, converted(folder, GetShortPathNameW));
}

}  // namespace

PrivateNames currentPrivateNames() {
    PrivateNames names;
    addProfile(names, environmentText(L"USERPROFILE"));
    std::array<wchar_t, MAX_PATH> folder{};
    if (SHGetFolderPathW(nullptr, CSIDL_PROFILE, nullptr, SHGFP_TYPE_CURRENT, folder.data()) == S_OK) {
        addProfile(names, folder.data());
    }
    for (const std::wstring& profile : names.profileFolders) {
        add(names.usersFolders, parentOf(profile));
        addName(names.users, lastNameOf(profile));
    }
    std::array<wchar_t, 257> name{};
    auto length = static_cast<DWORD>(name.size());
    if (GetUserNameW(name.data(), &length) != FALSE) {
        addName(names.users, name.data());
    }
    addName(names.users, environmentText(L"USERNAME"));
    // One may begin with another.
    std::sort(names.users.begin(), names.users.end(), [](const std::wstring& one, const std::wstring& other) {
        return one.size() > other.size();
    });
    for (const COMPUTER_NAME_FORMAT format :
         {ComputerNameNetBIOS, ComputerNameDnsFullyQualified, ComputerNameDnsHostname}) {
        length = static_cast<DWORD>(name.size());
        if (GetComputerNameExW(format, name.data(), &length) != FALSE) {
            addName(names.computers, name.data());
        }
    }
    return names;
}

std::wstring withoutPrivateNames(std::wstring text, const PrivateNames& names) {
    for (const std::wstring& folder : names.profileFolders) {
        hideProfile(text, folder);
    }
    for (const std::wstring& folder : names.usersFolders) {
        hideOtherProfiles(text, folder);
    }
    for (const std::wstring& user : names.users) {
        hideWord(text, user, kUser);
    }
    for (const std::wstring& computer : names.computers) {
        hideWord(text, computer, kComputer);
    }
    return text;
}
