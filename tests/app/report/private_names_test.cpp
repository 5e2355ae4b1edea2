#include "app/report/private_names.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace {

const PrivateNames kNames{.profileFolders = {L"C:\\Users\\Anna Muster", L"C:\\Users\\ANNAMU~1"},
                          .usersFolders = {L"C:\\Users"},
                          .users = {L"Anna Muster", L"anna", L"J\xF6rg"},
                          .computers = {L"ANNAS-PC"}};

std::wstring masked(const wchar_t* text) {
    return withoutPrivateNames(text, kNames);
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

TEST(PrivateNames, TheUsersAndTheComputersNamesAreHiddenAsWholeWords) {
    expectAll({
        {L"D:\\anna\\Kelvaro", L"D:\\<user>\\Kelvaro"},
        {L"Anna's Headset", L"<user>'s Headset"},
        {L"ANNA", L"<user>"},
        {L"Anna Muster's Headset and anna", L"<user>'s Headset and <user>"},
        {L"Kopfh\xF6rer von J\xD6RG", L"Kopfh\xF6rer von <user>"},
        {L"Hannah, annabel, anna_b and Susanna", L"Hannah, annabel, anna_b and Susanna"},
        {L"\\\\annas-pc\\share\\K.exe", L"\\\\<computer>\\share\\K.exe"},
        {L"Speakers (High Definition Audio Device)", L"Speakers (High Definition Audio Device)"},
        {L"", L""},
    });
}

TEST(PrivateNames, WhatWasPutThereIsNotReplacedAgain) {
    const PrivateNames names{.profileFolders = {L"C:\\Users\\user"},
                             .usersFolders = {L"C:\\Users"},
                             .users = {L"user", L"userprofile"},
                             .computers = {L"computer"}};
    EXPECT_EQ(withoutPrivateNames(L"C:\\Users\\user\\x of user on computer", names),
              L"%USERPROFILE%\\x of <user> on <computer>");
}

TEST(PrivateNames, NothingIsHiddenWithoutNames) {
    EXPECT_EQ(withoutPrivateNames(L"C:\\Users\\Anna", {}), L"C:\\Users\\Anna");
}

TEST(PrivateNames, ThoseOfThisUserAreFound) {
    const PrivateNames names = currentPrivateNames();
    wchar_t name[257] = L"";
    DWORD length = 257;
    ASSERT_NE(GetUserNameW(name, &length), FALSE);
    EXPECT_EQ(withoutPrivateNames(name, names), L"<user>");
    wchar_t profile[MAX_PATH] = L"";
    ASSERT_GT(GetEnvironmentVariableW(L"USERPROFILE", profile, MAX_PATH), 0U);
    EXPECT_EQ(withoutPrivateNames(std::wstring(profile) + L"\\a", names), L"%USERPROFILE%\\a");
    wchar_t shortened[MAX_PATH] = L"";
    ASSERT_GT(GetShortPathNameW(profile, shortened, MAX_PATH), 0U);
    EXPECT_EQ(withoutPrivateNames(std::wstring(shortened) + L"\\a", names), L"%USERPROFILE%\\a");
    wchar_t computer[257] = L"";
    length = 257;
    ASSERT_NE(GetComputerNameW(computer, &length), FALSE);
    EXPECT_EQ(withoutPrivateNames(computer, names), L"<computer>");
}

}  // namespace
