#include "app/report/private_names.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "app/report/report_writer.h"
#include "tests/e2e/report_texts.h"

namespace {

using testing::Contains;

const PrivateNames kNames{.profileFolders = {L"C:\\Users\\Anna Muster", L"C:\\Users\\ANNAMU~1"},
                          .usersFolders = {L"Users"},
                          .users = {L"Anna Muster", L"anna", L"J\xF6rg"},
                          .computers = {L"ANNAS-PC"}};

std::wstring masked(const wchar_t* text) {
    return withoutPrivateNames(text, kNames);
}

/// Of one name, as that of the user.
PrivateNames namedUser(const std::wstring& name) {
    PrivateNames names;
    names.users = {name};
    return names;
}

struct Case {
    const wchar_t* text;
    const wchar_t* shown;
};

void expectAll(const std::vector<Case>& cases) {
    for (const Case& each : cases) {
        EXPECT_EQ(masked(each.text), each.shown);
    }
}

TEST(PrivateNames, TheProfileIsHiddenInEveryCaseAndForm) {
    expectAll({
        {L"C:\\Users\\Anna Muster\\Kelvaro\\Kelvaro.exe", L"%USERPROFILE%\\Kelvaro\\Kelvaro.exe"},
        {L"c:\\USERS\\anna muster\\x", L"%USERPROFILE%\\x"},
        {L"C:/Users/Anna Muster/x", L"%USERPROFILE%/x"},
        {L"C:\\users\\annamu~1\\x", L"%USERPROFILE%\\x"},
        {L"\\\\?\\C:\\Users\\Anna Muster\\x", L"\\\\?\\%USERPROFILE%\\x"},
        {L"\"C:\\Users\\Anna Muster\\K.exe\" -delay15", L"\"%USERPROFILE%\\K.exe\" -delay15"},
        {L"C:\\Users\\Anna Muster", L"%USERPROFILE%"},
        {L"C:\\Users\\Anna Muster;C:\\Users\\Anna Muster\\b", L"%USERPROFILE%;%USERPROFILE%\\b"},
    });
}

TEST(PrivateNames, OtherUsersAreHiddenBelowTheFolderOfAllProfiles) {
    expectAll({
        {L"C:\\Users\\Bert\\x", L"C:\\Users\\<user>\\x"},
        {L"C:\\Users\\Anna Musterfrau\\x", L"C:\\Users\\<user>\\x"},
        {L"C:\\USERS\\BERT~1", L"C:\\USERS\\<user>"},
        // What the ANSI code page makes of a name that it lacks.
        {L"C:\\Users\\????\\x", L"C:\\Users\\<user>\\x"},
        {L"C:\\Users\\Public\\x", L"C:\\Users\\Public\\x"},
        {L"C:\\Users\\Default\\x", L"C:\\Users\\Default\\x"},
        {L"C:\\Users\\", L"C:\\Users\\"},
        {L"C:\\Users", L"C:\\Users"},
    });
}

TEST(PrivateNames, OtherUsersAreHiddenOnEveryDriveAndHoweverThePathIsWritten) {
    expectAll({
        {L"D:\\users\\Bert\\x", L"D:\\users\\<user>\\x"},
        {L"C:\\Users\\\\Bert\\x", L"C:\\Users\\\\<user>\\x"},
        {L"C:\\\\Users//Bert", L"C:\\\\Users//<user>"},
        {L"C:\\Users\\Public\\Users\\Bert", L"C:\\Users\\Public\\Users\\<user>"},
        {L"\\Device\\HarddiskVolume3\\Users\\Bert", L"\\Device\\HarddiskVolume3\\Users\\<user>"},
        {L"C:\\Users\\Bert M.\\a and C:\\Users\\Carl\\b", L"C:\\Users\\<user>\\a and C:\\Users\\<user>\\b"},
        {L"C:\\SuperUsers\\Bert", L"C:\\SuperUsers\\Bert"},
    });
}

TEST(PrivateNames, ServersOfPathsAreHidden) {
    expectAll({
        {L"\\\\nas-of-bert\\share\\K.exe", L"\\\\<computer>\\share\\K.exe"},
        {L"\"\\\\nas.example.org\\K.exe\" -delay15", L"\"\\\\<computer>\\K.exe\" -delay15"},
        {L"//nas/share", L"//<computer>/share"},
        {L"no, \\\\nas", L"no, \\\\<computer>"},
        {L"\\\\?\\UNC\\nas\\share", L"\\\\?\\UNC\\<computer>\\share"},
        {L"\\\\nas\\Users\\Bert\\x", L"\\\\<computer>\\Users\\<user>\\x"},
        {L"\\\\?\\C:\\x, \\\\.\\pipe\\x", L"\\\\?\\C:\\x, \\\\.\\pipe\\x"},
        {L"C:\\Kelvaro\\\\Kelvaro.exe", L"C:\\Kelvaro\\\\Kelvaro.exe"},
        {L"\\\\", L"\\\\"},
    });
}

TEST(PrivateNames, NamesAreHiddenInScriptsThatWriteNoBlanks) {
    PrivateNames names = namedUser(L"\x674E\x660E");
    names.users.emplace_back(L"Anna");
    EXPECT_EQ(withoutPrivateNames(L"\x674E\x660E\x7684 AirPods, \x684C\x674E\x660E", names),
              L"<user>\x7684 AirPods, \x684C<user>");
    EXPECT_EQ(withoutPrivateNames(L"Anna\xC758 Headset, \x0E02\x0E2D\x0E07"
                                  L"Anna",
                                  names),
              L"<user>\xC758 Headset, \x0E02\x0E2D\x0E07<user>");
}

TEST(PrivateNames, NamesWithHalvesOfPairsAreHidden) {
    // A letter beyond the first 65,536 characters is a pair, which has no other case.
    const PrivateNames names = namedUser(L"\xD83D\xDC31 Anna");
    EXPECT_EQ(withoutPrivateNames(L"Headset of \xD83D\xDC31 ANNA.", names), L"Headset of <user>.");
    EXPECT_EQ(withoutPrivateNames(L"\xD83D\xDC32 Anna", names), L"\xD83D\xDC32 Anna");
}

TEST(PrivateNames, TheUsersAndTheComputersNamesAreHiddenAsWholeWords) {
    expectAll({
        {L"D:\\anna\\Kelvaro", L"D:\\<user>\\Kelvaro"},
        {L"Anna's Headset", L"<user>'s Headset"},
        {L"ANNA", L"<user>"},
        {L"Anna Muster's Headset and anna", L"<user>'s Headset and <user>"},
        {L"Kopfh\xF6rer von J\xD6RG", L"Kopfh\xF6rer von <user>"},
        {L"Hannah, annabel, annas2 and Susanna", L"Hannah, annabel, annas2 and Susanna"},
        {L"headset_of_anna_2", L"headset_of_<user>_2"},
        {L"Annas Kopfh\xF6rer, ANNAS", L"<user>s Kopfh\xF6rer, <user>S"},
        {L"\\\\annas-pc\\share\\K.exe", L"\\\\<computer>\\share\\K.exe"},
        {L"Speakers (High Definition Audio Device)", L"Speakers (High Definition Audio Device)"},
        {L"", L""},
    });
}

TEST(PrivateNames, WhatWasPutThereIsNotReplacedAgain) {
    const PrivateNames names{.profileFolders = {L"C:\\Users\\user"},
                             .usersFolders = {L"Users"},
                             .users = {L"user", L"userprofile", L"Anna"},
                             .computers = {L"computer"}};
    EXPECT_EQ(withoutPrivateNames(L"C:\\Users\\user\\x of Anna on computer", names),
              L"%USERPROFILE%\\x of <user> on computer");
}

TEST(PrivateNames, NamesInAngleBracketsOrPercentSignsAreHiddenAsWell) {
    expectAll({
        {L"<anna> and %anna%", L"<<user>> and %<user>%"},
        {L"<annas-pc>", L"<<computer>>"},
    });
}

TEST(PrivateNames, CommonWordsAreHiddenInProfilesOnly) {
    const std::wstring path = L"C:\\Windows\\system32\\x.dll";
    for (const wchar_t* name : {L"Windows", L"KELVARO", L"Speaker", L"Admin", L"not", L"dll", L"x", L"32"}) {
        const std::wstring folder = std::wstring(L"C:\\Users\\") + name;
        const PrivateNames names{
            .profileFolders = {folder}, .usersFolders = {L"Users"}, .users = {name}, .computers = {name}};
        for (const std::wstring& text : {path,
                                         std::wstring(L"not there"),
                                         std::wstring(L"Speaker 32 (Admin's)"),
                                         std::wstring(L"D:\\Kelvaro\\Kelvaro.exe: not there")}) {
            EXPECT_EQ(withoutPrivateNames(text, names), text);
        }
        EXPECT_EQ(withoutPrivateNames(folder + L"\\x.dll", names), L"%USERPROFILE%\\x.dll");
        EXPECT_EQ(withoutPrivateNames(L"C:\\Users\\Speaker2\\y", names), L"C:\\Users\\<user>\\y");
    }
}

/// Words of letters in the values of a report's text.
std::set<std::wstring> wordsOfValues(std::string_view text) {
    std::set<std::wstring> words;
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("  ") && line.size() > ReportWriter::kValueColumn) {
            const std::string value = line.substr(ReportWriter::kValueColumn);
            const std::regex word("\\b[A-Za-z]+\\b");
            for (std::sregex_iterator each(value.begin(), value.end(), word), end; each != end; ++each) {
                const std::string found = each->str();
                words.emplace(found.begin(), found.end());
            }
        }
    }
    return words;
}

TEST(PrivateNames, TheReportsOwnWordsAreHiddenNowhere) {
    const std::set<std::wstring> words = wordsOfValues(kWithNothing);
    EXPECT_GT(words.size(), 50U);
    for (const std::wstring& word : words) {
        EXPECT_EQ(withoutPrivateNames(word, namedUser(word)), word);
        // "Thi" is a name, "this" is not that of its owner.
        EXPECT_EQ(withoutPrivateNames(word, namedUser(word.substr(0, word.size() - 1))), word);
    }
}

TEST(PrivateNames, ShortNamesThatAreNoWordsAreHidden) {
    PrivateNames names = namedUser(L"Li");
    names.users.insert(names.users.end(), {L"\x674E", L"user1", L"Anna Test"});
    names.computers = {L"X1"};
    EXPECT_EQ(withoutPrivateNames(L"Li's, \x674E, user1 and anna test on X1", names),
              L"<user>'s, <user>, <user> and <user> on <computer>");
}

TEST(PrivateNames, NothingIsHiddenWithoutNames) {
    EXPECT_EQ(withoutPrivateNames(L"C:\\Users\\Anna", {}), L"C:\\Users\\Anna");
}

TEST(PrivateNames, ThoseOfThisUserAreFound) {
    const PrivateNames names = currentPrivateNames();
    wchar_t name[257] = L"";
    DWORD length = 257;
    ASSERT_NE(GetUserNameW(name, &length), FALSE);
    EXPECT_THAT(names.users, Contains(std::wstring(name)));
    wchar_t profile[MAX_PATH] = L"";
    ASSERT_GT(GetEnvironmentVariableW(L"USERPROFILE", profile, MAX_PATH), 0U);
    EXPECT_EQ(withoutPrivateNames(std::wstring(profile) + L"\\a", names), L"%USERPROFILE%\\a");
    wchar_t shortened[MAX_PATH] = L"";
    ASSERT_GT(GetShortPathNameW(profile, shortened, MAX_PATH), 0U);
    EXPECT_EQ(withoutPrivateNames(std::wstring(shortened) + L"\\a", names), L"%USERPROFILE%\\a");
    wchar_t computer[257] = L"";
    length = 257;
    ASSERT_NE(GetComputerNameW(computer, &length), FALSE);
    EXPECT_THAT(names.computers, Contains(std::wstring(computer)));
}

}  // namespace
