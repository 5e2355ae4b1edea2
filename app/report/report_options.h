#pragma once

#include <span>
#include <string>
#include <string_view>

/// What the user asked for on the command line.
struct ReportOptions {
    /// The LCD's library is started as well, which shows on the keyboard.
    bool lcd = false;
    bool help = false;
    /// The argument that is no option; empty when all are.
    std::wstring unknown;
};

/// Reads the arguments, without the program's name.
ReportOptions reportOptions(std::span<const wchar_t* const> arguments);

/// What --help prints.
inline constexpr std::wstring_view kReportHelp =
    L"Usage: KelvaroReport [--lcd]\n"
    L"\n"
    L"Prints what Kelvaro finds on this machine and what it does not: the text to send when a figure is "
    L"missing.\n"
    L"To get it as a file:  KelvaroReport > report.txt\n"
    L"\n"
    L"  --lcd    start the LCD's library as well, and say whether it finds a colour LCD. For a moment the "
    L"applet\n"
    L"           may show on the keyboard. Without this option the library is looked at only.\n"
    L"  --help   print this\n"
    L"\n"
    L"Nothing is changed, and nothing is sent anywhere. The names of users, of computers, of the domain and "
    L"of mail\n"
    L"accounts are left out. Exit code: 0 when everything could be looked at, whether or not it was found; "
    L"1 when\n"
    L"something could not be looked at, or the text not be written; 2 for an unknown option.\n";
