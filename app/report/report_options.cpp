#include "app/report/report_options.h"

ReportOptions reportOptions(std::span<const wchar_t* const> arguments) {
    ReportOptions options;
    for (const std::wstring_view argument : arguments) {
        if (argument == L"--lcd") {
            options.lcd = true;
        } else if (argument == L"--help" || argument == L"-h" || argument == L"/?") {
            options.help = true;
        } else if (options.unknown.empty()) {
            // An argument without a letter is none either, and must not look like none at all.
            options.unknown = argument.empty() ? L"\"\"" : argument;
        }
    }
    return options;
}
