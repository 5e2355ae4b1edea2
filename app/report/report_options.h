#pragma once

#include <span>
#include <string>
#include <string_view>

/// What the user asked for on the command line.
struct ReportOptions {
    /// The LCD's library is started as well, which shows on the keyboard.
    bool lcd = false;
    bool help = false;
    /// The report goes to a new file in Documents, which is opened afterwards.
    bool save = false;
    /// The file that the report goes to in place of the standard output; empty for none.
    std::wstring output;
    /// The first thing that is wrong with the arguments; empty when nothing is.
    std::wstring problem;
};

/// Reads the arguments, without the program's name.
ReportOptions reportOptions(std::span<const wchar_t* const> arguments);

/// What --help prints.
inline constexpr std::wstring_view kReportHelp =
    L"Usage: KelvaroReport [--lcd] [--output FILE | --save]\n"
    L"\n"
    L"Prints what Kelvaro finds on this machine and what it does not: the text to send when a figure is "
    L"missing.\n"
    L"\n"
    L"  --output FILE\n"
    L"           write the text to FILE; a file of that name is replaced\n"
    L"  --save   write the text to a new file in Documents, \"Kelvaro report DATE TIME.txt\", and open it\n"
    L"  --lcd    start the LCD's library as well, and say whether it finds a colour LCD. For a moment the "
    L"applet\n"
    L"           may show on the keyboard. Without this option the library is looked at only.\n"
    L"  --help   print this\n"
    L"\n"
    L"Nothing is changed, and nothing is sent anywhere. The names of users, of computers, of the domain and "
    L"of mail\n"
    L"accounts are left out. Exit code: 0 when everything could be looked at, whether or not it was found; "
    L"1 when\n"
    L"something could not be looked at, or the text not be written; 2 for a wrong command line. A driver "
    L"that "
    L"crashes,\n"
    L"or does not answer for 15 seconds, ends the report in its section, with 1.\n";
