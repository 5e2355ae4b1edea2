#include "app/report/private_names.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace {

constexpr std::wstring_view kProfile = L"%USERPROFILE%";
constexpr std::wstring_view kUser = L"<user>";
constexpr std::wstring_view kComputer = L"<computer>";

/// Folders among the profiles that belong to no person.
constexpr std::wstring_view kNobodys[] = {L"public", L"default", L"all users", L"default user"};

/// Names that say nothing about a person or a machine, between blanks. Hidden everywhere they would take the
/// report's own words out of it: "<user> there" for "not there", "C:\\<user>\\system32".
constexpr std::wstring_view kCommonNames =
    // Of accounts, computers and folders; those of what is put in the place of names among them.
    L" admin administrator computer default desktop files guest home laptop local notebook office owner "
    L"pc program public system system32 temp test user userprofile users windows work "
    // Of what the report is about.
    L" adapter amd atiadlxx audio battery bits bytes card clock code controller core cpu crashdumps "
    L"default definition device devices digital display dll driver dump dumps entry exe figure figures "
    L"gamepad geforce getcoretempinfo gpu hardware headphones headset high hklm installer intel kelvaro "
    L"kelvaroreport keyboard khz kib lcd level library line lines list machine mail manager mapping "
    L"memory mib microphone microphones mmdevapi mobile monitor nvidia output program radeon realtek "
    L"record report result serverbinary session software sound speaker speakers status switch task usb "
    L"version volume wine "
    // Of its sentences.
    L" active all and at available be been before but called cannot classes clsid connected could count "
    L"does empty end ends error fails false file finds first for form found free full gone had has here "
    L"id in installed is it its keeps known left loaded longer looked low made may medium missing mode "
    L"module name names needed neither nimh no none not now of off on one only open or path read "
    L"registered removed run runs say says second seconds send set share shared shorter shows start "
    L"switched switches taken text than that the them there this to tried true type under unknown used "
    L"want what which wired with without works yes ";

/// One form for comparing, as long as the text: small letters, and one kind of slash.
std::wstring comparable(std::wstring_view text) {
    std::wstring form(text);
    // Windows' own rule for file names would be capitals; this maps letter by letter as well.
    CharLowerBuffW(form.data(), static_cast<DWORD>(form.size()));
    std::replace(form.begin(), form.end(), L'/', L'\\');
    return form;
}

/// Thai and its neighbours, Chinese, Japanese and Korean put no blank between a name and the next word.
bool isOfScriptWithoutBlanks(wchar_t character) {
    return (character >= L'\x0E00' && character < L'\x0F00') || character >= L'\x2E80';
}

bool isPartOfWord(wchar_t character) {
    return IsCharAlphaNumericW(character) != FALSE && !isOfScriptWithoutBlanks(character);
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

bool endsWord(std::wstring_view text, std::size_t end) {
    return end >= text.size() || !isPartOfWord(text[end]);
}

/// Two slashes at the beginning or behind one of these begin a UNC path; elsewhere they are inside a path.
bool mayStandBeforePath(wchar_t character) {
    return std::wstring_view(L" \"'(<|;,=").find(character) != std::wstring_view::npos;
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

/// Where a name in a path ends that begins at `begin`.
std::size_t endOfName(std::wstring_view text, std::size_t begin) {
    // A question mark is what the ANSI code page makes of a letter that it lacks.
    while (begin < text.size() && (!endsName(text[begin]) || text[begin] == L'?')) {
        ++begin;
    }
    return begin;
}

/// Names of the folders right below those of the name `folder`, on every drive, but for those that belong to
/// no person.
void hideProfilesBelow(std::wstring& text, std::wstring_view folder) {
    const std::wstring sought = L'\\' + comparable(folder) + L'\\';
    std::size_t position = 0;
    while ((position = comparable(text).find(sought, position)) != std::wstring::npos) {
        // The last slash may begin the next place.
        position += sought.size() - 1;
        std::size_t begin = position;
        while (begin < text.size() && isSlash(text[begin])) {
            ++begin;
        }
        const std::size_t end = endOfName(text, begin);
        const std::wstring name = comparable(std::wstring_view(text).substr(begin, end - begin));
        if (!name.empty() &&
            std::find(std::begin(kNobodys), std::end(kNobodys), name) == std::end(kNobodys)) {
            text.replace(begin, end - begin, kUser);
        }
    }
}

/// The servers' names in paths such as "\\server\share" and "\\?\UNC\server\share".
void hideServers(std::wstring& text) {
    constexpr std::wstring_view kLongForm = L"?\\unc\\";
    for (std::size_t position = 0; position + 2 < text.size(); ++position) {
        if (!isSlash(text[position]) || !isSlash(text[position + 1]) ||
            (position > 0 && !mayStandBeforePath(text[position - 1]))) {
            continue;
        }
        std::size_t begin = position + 2;
        if (comparable(text.substr(begin, kLongForm.size())) == kLongForm) {
            begin += kLongForm.size();
        }
        const std::size_t end = endOfName(text, begin);
        const std::wstring_view name = std::wstring_view(text).substr(begin, end - begin);
        // Those of Windows' own paths, "\\?\C:\file" and "\\.\device".
        if (!name.empty() && name != L"?" && name != L".") {
            text.replace(begin, end - begin, kComputer);
        }
    }
}

/// Whether a name is a common one, a number, or a single letter of ASCII, such as that of a drive. Question
/// marks alone are what the ANSI code page makes of a name of another script.
bool saysNothing(std::wstring_view name) {
    const auto isNoLetter = [](wchar_t character) {
        return (character >= L'0' && character <= L'9') || character == L'?';
    };
    return (name.size() == 1 && name.front() < L'\x80') ||
           std::all_of(name.begin(), name.end(), isNoLetter) ||
           kCommonNames.find(L' ' + comparable(name) + L' ') != std::wstring_view::npos;
}

void hideWord(std::wstring& text, std::wstring_view word, std::wstring_view replacement) {
    // What was put there by this is common as well, and not replaced again.
    if (saysNothing(word)) {
        return;
    }
    replaceAll(text, word, replacement, [&](std::wstring_view whole, std::size_t position) {
        const std::size_t end = position + word.size();
        if (position > 0 && isPartOfWord(whole[position - 1])) {
            return false;
        }
        if (endsWord(whole, end)) {
            return true;
        }
        // The owner's name in front of a device's, in languages that write it without an apostrophe.
        return (whole[end] == L's' || whole[end] == L'S') && endsWord(whole, end + 1) &&
               !saysNothing(whole.substr(position, word.size() + 1));
    });
}

}  // namespace

std::wstring withoutPrivateNames(std::wstring text, const PrivateNames& names) {
    for (const std::wstring& folder : names.profileFolders) {
        hideProfile(text, folder);
    }
    for (const std::wstring& folder : names.usersFolders) {
        hideProfilesBelow(text, folder);
    }
    hideServers(text);
    // Computers are called after their users: each word of a user's name is among the names, so none is left.
    for (const std::wstring& computer : names.computers) {
        hideWord(text, computer, kComputer);
    }
    for (const std::wstring& user : names.users) {
        hideWord(text, user, kUser);
    }
    return text;
}
