#include <windows.h>

#include <shlobj.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/report/private_names.h"
#include "app/report/report.h"
#include "framework/core/com_apartment.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/core_audio/virtual_audio.h"
#include "tests/support/import_override.h"
#include "tests/support/installation.h"
#include "tests/support/lcd_registration.h"
#include "tests/support/registry_override.h"
#include "tests/support/standin_session.h"

// The names of a machine of the tests' own: what the machine that runs them is called must not matter.

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/// What Windows says of the machine and its user. An empty text is one that it does not tell.
struct Machine {
    std::map<std::wstring, std::wstring> environment;
    std::wstring profile;
    std::wstring account;
    std::wstring fullName;
    std::map<COMPUTER_NAME_FORMAT, std::wstring> computer;
    /// Other forms of paths, the long one first.
    std::vector<std::pair<std::wstring, std::wstring>> shortPaths;
};

Machine machine;

/// As calls for paths do: the length when the text fits, otherwise the room that it needs, 0 for none.
DWORD give(const std::wstring& text, wchar_t* buffer, DWORD capacity) {
    if (text.size() >= capacity) {
        return static_cast<DWORD>(text.size() + 1);
    }
    text.copy(buffer, text.size());
    buffer[text.size()] = L'\0';
    return static_cast<DWORD>(text.size());
}

using GetVariable = DWORD WINAPI(LPCWSTR, LPWSTR, DWORD);
GetVariable* getVariable = nullptr;

// The stand-ins' own variables are as they are.
DWORD WINAPI tellEnvironment(LPCWSTR name, LPWSTR buffer, DWORD capacity) {
    return std::wstring_view(name).starts_with(L"USER") ? give(machine.environment[name], buffer, capacity)
                                                        : getVariable(name, buffer, capacity);
}

HRESULT WINAPI tellFolder(HWND, int folder, HANDLE, DWORD, LPWSTR path) {
    if (folder != CSIDL_PROFILE || machine.profile.empty() || machine.profile.size() >= MAX_PATH) {
        return E_FAIL;
    }
    give(machine.profile, path, MAX_PATH);
    return S_OK;
}

BOOL tellName(const std::wstring& name, wchar_t* buffer, DWORD* length) {
    if (name.empty() || name.size() >= *length) {
        SetLastError(name.empty() ? ERROR_NONE_MAPPED : ERROR_MORE_DATA);
        *length = static_cast<DWORD>(name.size() + 1);
        return FALSE;
    }
    *length = give(name, buffer, *length);
    return TRUE;
}

BOOL WINAPI tellAccount(LPWSTR buffer, LPDWORD length) {
    const BOOL told = tellName(machine.account, buffer, length);
    // Of this name the terminator is counted.
    *length += told != FALSE ? 1 : 0;
    return told;
}

BOOL WINAPI tellComputer(COMPUTER_NAME_FORMAT format, LPWSTR buffer, LPDWORD length) {
    return tellName(machine.computer[format], buffer, length);
}

BOOLEAN WINAPI tellFullName(int format, LPWSTR buffer, PULONG length) {
    constexpr int kNameDisplay = 3;
    EXPECT_EQ(format, kNameDisplay);
    return static_cast<BOOLEAN>(tellName(machine.fullName, buffer, length));
}

DWORD WINAPI tellShortPath(LPCWSTR path, LPWSTR buffer, DWORD capacity) {
    for (const auto& [longPath, shortPath] : machine.shortPaths) {
        if (longPath == path) {
            return give(shortPath, buffer, capacity);
        }
    }
    return give(path, buffer, capacity);
}

DWORD WINAPI tellLongPath(LPCWSTR path, LPWSTR buffer, DWORD capacity) {
    for (const auto& [longPath, shortPath] : machine.shortPaths) {
        if (shortPath == path) {
            return give(longPath, buffer, capacity);
        }
    }
    return give(path, buffer, capacity);
}

using FindFunction = FARPROC WINAPI(HMODULE, LPCSTR);
FindFunction* findInLibrary = nullptr;

FARPROC WINAPI findFullName(HMODULE library, LPCSTR name) {
    const bool isFullName = IS_INTRESOURCE(name) == FALSE && std::strcmp(name, "GetUserNameExW") == 0;
    return isFullName ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(tellFullName))
                      : findInLibrary(library, name);
}

/// A machine in a domain, with two other users, one of whom has left. All names are made up.
class NamesOfAMachine : public testing::Test {
protected:
    NamesOfAMachine() {
        getVariable = environment.original<GetVariable>();
        findInLibrary = functions.original<FindFunction>();
        machine = {};
        machine.environment = {{L"USERPROFILE", L"C:\\Users\\amuster"},
                               {L"USERNAME", L"amuster"},
                               {L"USERDOMAIN", L"HILLTOP"},
                               {L"USERDNSDOMAIN", L"HILLTOP.EXAMPLE"}};
        machine.profile = L"C:\\Users\\amuster";
        machine.account = L"amuster";
        machine.fullName = L"Anna-Lena Muster";
        machine.computer = {{ComputerNameNetBIOS, L"ROSEBUD-OF-ANNA"},
                            {ComputerNameDnsHostname, L"Rosebud-Of-Annas-Desk"},
                            {ComputerNameDnsFullyQualified, L"Rosebud-Of-Annas-Desk.hilltop.example"},
                            {ComputerNameDnsDomain, L"hilltop.example"}};
        addProfile(L"S-1-5-18", L"%SystemRoot%\\system32\\config\\systemprofile");
        // In the registry's order the identifiers become longer, and one in the middle is a service's.
        addProfile(L"S-1-12-1-7", L"C:\\Users\\carl");
        addProfile(L"S-1-5-21-1111111111-2222222222-3333333333-1001", L"C:\\Users\\amuster");
        addProfile(L"S-1-5-21-1111111111-2222222222-3333333333-1002", L"E:\\Profiles\\bert.HILLTOP");
        addProfile(L"S-1-5-80-1111111111-2222222222-3333333333-4444444444", L"C:\\Users\\Database");
    }
    ~NamesOfAMachine() override { machine = {}; }

    static void addProfile(const std::wstring& account, const std::wstring& path) {
        RegistryOverride::setText(HKEY_LOCAL_MACHINE,
                                  L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\" + account,
                                  L"ProfileImagePath",
                                  path);
    }

    static std::wstring masked(const std::wstring& text) {
        return withoutPrivateNames(text, currentPrivateNames());
    }

    RegistryOverride registry;
    ImportOverride environment{"kernel32.dll", "GetEnvironmentVariableW", tellEnvironment};
    ImportOverride folder{"shell32.dll", "SHGetFolderPathW", tellFolder};
    ImportOverride account{"advapi32.dll", "GetUserNameW", tellAccount};
    ImportOverride computer{"kernel32.dll", "GetComputerNameExW", tellComputer};
    ImportOverride shortPath{"kernel32.dll", "GetShortPathNameW", tellShortPath};
    ImportOverride longPath{"kernel32.dll", "GetLongPathNameW", tellLongPath};
    ImportOverride functions{"kernel32.dll", "GetProcAddress", findFullName};
};

TEST_F(NamesOfAMachine, EachWordOfTheFullNameIsHidden) {
    EXPECT_EQ(masked(L"Anna's, Lena's, MUSTERS and Anna-Lena Muster's headset"),
              L"<user>'s, <user>'s, <user>S and <user>'s headset");
    machine.fullName = L"";
    EXPECT_EQ(masked(L"Anna's headset of amuster"), L"Anna's headset of <user>");
}

TEST_F(NamesOfAMachine, EachWordOfTheAccountsNameIsHidden) {
    machine.fullName = L"";
    machine.account = L"doris.m_oak";
    EXPECT_EQ(masked(L"doris.m_oak, Doris and Oak"), L"<user>, <user> and <user>");
    machine.account = L"";
    machine.environment[L"USERNAME"] = L"edda";
    EXPECT_EQ(masked(L"Doris and Edda"), L"Doris and <user>");
}

TEST_F(NamesOfAMachine, AllUsersWhoHaveAProfileAreHidden) {
    EXPECT_EQ(masked(L"Bert's, Carl's and Dora's headset"), L"<user>'s, <user>'s and Dora's headset");
    EXPECT_EQ(masked(L"e:\\profiles\\bert.HILLTOP\\x, E:\\Profiles\\dora\\x"),
              L"e:\\profiles\\<user>\\x, E:\\Profiles\\<user>\\x");
    EXPECT_EQ(masked(L"C:\\Windows\\system32\\config\\systemprofile, Database"),
              L"C:\\Windows\\system32\\config\\systemprofile, Database");
}

TEST_F(NamesOfAMachine, AProfileListThatIsNotThereLeavesTheRest) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT");
    EXPECT_EQ(masked(L"C:\\Users\\amuster\\x of Anna, C:\\Users\\bert"),
              L"%USERPROFILE%\\x of <user>, C:\\Users\\<user>");
}

TEST_F(NamesOfAMachine, OfNamesThatBeginWithOneAnotherNoEndIsLeft) {
    machine.account = L"anna";
    machine.fullName = L"";
    machine.environment[L"USERNAME"] = L"anna-lena";
    EXPECT_EQ(masked(L"D:\\anna-lena\\x, D:\\anna\\x"), L"D:\\<user>\\x, D:\\<user>\\x");
    EXPECT_EQ(masked(L"Rosebud-Of-Anna, rosebud-of-annas-desk, Rosebud-of-Annas-Desk.Hilltop.Example"),
              L"<computer>, <computer>, <computer>");
    EXPECT_THAT(currentPrivateNames().computers.front(), L"Rosebud-Of-Annas-Desk.hilltop.example");
}

TEST_F(NamesOfAMachine, TheDomainIsHidden) {
    EXPECT_EQ(masked(L"HILLTOP\\amuster, \\\\files.hilltop.example\\x, mail.Hilltop.example"),
              L"<computer>\\<user>, \\\\<computer>\\x, mail.<computer>");
    machine.environment[L"USERDNSDOMAIN"] = L"OTHER.EXAMPLE";
    EXPECT_EQ(masked(L"files.other.example, mail.hilltop.example"), L"files.<computer>, mail.<computer>");
}

TEST_F(NamesOfAMachine, TheProfileIsHiddenInItsShortAndInItsLongForm) {
    machine.profile = L"";
    machine.environment[L"USERPROFILE"] = L"C:\\DOCUME~1\\ANNAMU~1";
    machine.shortPaths = {{L"C:\\Documents and Settings\\Anna Muster", L"C:\\DOCUME~1\\ANNAMU~1"}};
    EXPECT_EQ(masked(L"C:\\Documents and Settings\\Anna Muster\\x, c:\\docume~1\\annamu~1\\y"),
              L"%USERPROFILE%\\x, %USERPROFILE%\\y");
    EXPECT_EQ(masked(L"C:\\Documents and Settings\\Dora, C:\\DOCUME~1\\DORA\\y"),
              L"C:\\Documents and Settings\\<user>, C:\\DOCUME~1\\<user>\\y");
    EXPECT_EQ(masked(L"D:\\ANNAMU~2\\y"), L"D:\\<user>~2\\y") << "another folder of that name";
    machine.environment[L"USERPROFILE"] = L"C:\\Documents and Settings\\Anna Muster";
    EXPECT_EQ(masked(L"C:\\DOCUME~1\\ANNAMU~1\\y"), L"%USERPROFILE%\\y");
}

TEST_F(NamesOfAMachine, AProfileWithAPathOfMoreThan260CharactersIsHidden) {
    machine.profile = L"";
    std::wstring path = L"\\\\files\\profiles";
    while (path.size() < 300) {
        path += L"\\department";
    }
    machine.environment[L"USERPROFILE"] = path + L"\\Anna";
    EXPECT_EQ(masked(path + L"\\anna\\Kelvaro"), L"%USERPROFILE%\\Kelvaro");
}

TEST_F(NamesOfAMachine, TheRootOfADriveIsNobodysProfile) {
    machine.profile = L"";
    for (const wchar_t* root : {L"X:\\", L"X:", L"\\", L""}) {
        machine.environment[L"USERPROFILE"] = root;
        EXPECT_THAT(currentPrivateNames().profileFolders, testing::IsEmpty());
        EXPECT_EQ(masked(L"X:\\Kelvaro.exe"), L"X:\\Kelvaro.exe");
    }
    machine.environment[L"USERPROFILE"] = L"X:\\Dora\\";
    EXPECT_EQ(masked(L"X:\\dora\\x, X:\\Tools\\x"), L"%USERPROFILE%\\x, X:\\Tools\\x");
}

TEST_F(NamesOfAMachine, WhatTheAnsiCodePageMakesOfANameIsHidden) {
    if (GetACP() != 1252) {
        GTEST_SKIP() << "the letters are those of the western code page";
    }
    machine.account = L"\x141ukasz";
    EXPECT_EQ(masked(L"D:\\\x141ukasz\\x, D:\\Lukasz\\x"), L"D:\\<user>\\x, D:\\<user>\\x");
    machine.profile = L"F:\\\x141\\\x141ukasz";
    EXPECT_EQ(masked(L"F:\\L\\Lukasz\\x, F:\\L\\Dora"), L"%USERPROFILE%\\x, F:\\L\\<user>");
    machine.account = L"\x418\x432\x430\x43D";
    EXPECT_EQ(masked(L"what????"), L"what????") << "nothing is left of that name";
}

TEST_F(NamesOfAMachine, NamesWithSeparateAccentsAreHidden) {
    machine.account = L"J\xF6rg";
    EXPECT_EQ(masked(L"J\xF6rg's and Jo\x308rg's headset"), L"<user>'s and <user>'s headset");
}

TEST_F(NamesOfAMachine, WhatWindowsDoesNotTellIsLeftOut) {
    machine = {};
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT");
    const PrivateNames names = currentPrivateNames();
    EXPECT_THAT(names.profileFolders, testing::IsEmpty());
    EXPECT_THAT(names.usersFolders, testing::IsEmpty());
    EXPECT_THAT(names.users, testing::IsEmpty());
    EXPECT_THAT(names.computers, testing::IsEmpty());
}

/// With the stand-ins' libraries, so in a process of its own.
class ReportOnAMachine : public NamesOfAMachine {};

TEST_F(ReportOnAMachine, HasNoneOfItsNames) {
    const StandinSession session;
    const Panelix::ComApartment apartment;
    Standins::VirtualAudio audio;
    const Standins::LoadedCoreAudio server;
    audio.addDevice({.id = L"{1}",
                     .name = L"ANNAS Kopfh\xF6rer (Bert Muster)",
                     .levels = {.channels = {0.5F, 0.5F}, .master = 0.5F}});
    // The 256 characters that the program itself keeps of it would end with "Le".
    audio.addDevice(
        {.id = L"{2}", .name = L"x Lena headset", .nameKind = Standins::FriendlyName::Endless, .levels = {}});
    RegistryOverride::setText(
        HKEY_CURRENT_USER, kRunKey, L"Kelvaro", L"\"\\\\files.hilltop.example\\x\\Anna\\Kelvaro.exe\"");
    RegistryOverride::setText(
        HKEY_LOCAL_MACHINE, kProgramKey, L"InstallDir", L"C:\\Users\\bert\\carls_tools\\rosebud-of-anna");
    registerLcdLibrary(L"C:\\Users\\amuster\\muster\\Hilltop\\" + std::wstring(180, L'x') + L"\\Anna.dll");
    RegistryOverride::makeKey(
        HKEY_CURRENT_USER, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UnreadMail\\anna@hilltop.example");
    std::vector<std::wstring> lines;
    writeReport({}, [&](std::wstring_view line) { lines.emplace_back(line); });
    EXPECT_THAT(lines, Contains(L"  Run entry                   \"\\\\<computer>\\x\\<user>\\Kelvaro.exe\""));
    EXPECT_THAT(lines,
                Contains(L"  InstallDir                  C:\\Users\\<user>\\<user>s_tools\\<computer>"));
    EXPECT_THAT(lines, Contains(L"  Speaker 1                   <user>S Kopfh\xF6rer (<user> <user>)"));
    std::wstring endless;
    while (endless.size() < ReportWriter::kLongestValue) {
        endless += L"x <user> headset";
    }
    endless.resize(ReportWriter::kLongestValue);
    EXPECT_THAT(lines, Contains(L"  Speaker 2                   " + endless + L"..."));
    for (std::wstring& line : lines) {
        CharLowerW(line.data());
        for (const wchar_t* name : {L"anna", L"lena", L"muster", L"bert", L"carl", L"rosebud", L"hilltop"}) {
            EXPECT_THAT(line, Not(HasSubstr(name)));
        }
    }
}

}  // namespace
