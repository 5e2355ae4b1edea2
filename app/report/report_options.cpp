#include "app/report/report_options.h"

#include <cstddef>

ReportOptions reportOptions(std::span<const wchar_t* const> arguments) {
    ReportOptions options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::wstring_view argument = arguments[i];
        if (argument == L"--lcd") {
            options.lcd = true;
        } else if (argument == L"--save") {
            options.save = true;
        } else if (argument == L"--output") {
            // An option in the place of the name is no name: the name was forgotten.
            const std::wstring_view name = i + 1 < arguments.size() ? arguments[i + 1] : L"";
            if (name.empty() || name.starts_with(L"--")) {
                options.problem = L"--output needs the name of a file";
            } else {
                options.output = name;
                ++i;
            }
        } else if (argument == L"--help" || argument == L"-h" || argument == L"/?") {
            options.help = true;
        } else if (options.problem.empty()) {
            options.problem = L"unknown option '" + std::wstring(argument) + L"'";
        }
    }
    if (options.problem.empty() && options.save && !options.output.empty()) {
        options.problem = L"--save and --output cannot be used together";
    }
    return options;
}
