#include "app/report/report_program.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

#include "app/library_loading.h"
#include "app/report/private_names.h"
#include "app/report/report.h"
#include "app/report/system_facts.h"
#include "app/report/text_output.h"

namespace {

/// The module that an address belongs to, without its folder; empty for none.
std::wstring moduleAt(void* address) {
    HMODULE module = nullptr;
    if (GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            static_cast<const wchar_t*>(address),
            &module) == FALSE) {
        return {};
    }
    const std::wstring path = modulePath(module);
    return path.substr(path.find_last_of(L'\\') + 1);
}

// A fault in a driver's code: says where, since the section's title stands above. The system's own box would
// not get into the text.
LONG WINAPI endWithNote(EXCEPTION_POINTERS* fault) noexcept {
    const auto code = static_cast<std::uint32_t>(fault->ExceptionRecord->ExceptionCode);
    const std::wstring module = moduleAt(fault->ExceptionRecord->ExceptionAddress);
    const TextOutput output(STD_OUTPUT_HANDLE);
    output.write(L"\nThe report ends here, in the section above: exception " + hexText(code) + L" in ");
    output.writeLine(module.empty() ? L"unknown code" : withoutPrivateNames(module, currentPrivateNames()));
    std::_Exit(kExitIncomplete);
}

/// Whether the console window was made for this program: it goes with the program's end.
bool ownsConsole() {
    DWORD processes[2] = {};
    return GetConsoleProcessList(processes, 2) == 1;
}

void waitForEnter(const TextOutput& output) {
    output.write(L"\nPress Enter to close this window. ");
    wchar_t key = 0;
    DWORD read = 0;
    while (ReadConsoleW(GetStdHandle(STD_INPUT_HANDLE), &key, 1, &read, nullptr) != FALSE && read == 1 &&
           key != L'\n') {
    }
}

int run(const ReportOptions& options, const TextOutput& output) {
    if (!options.unknown.empty()) {
        TextOutput(STD_ERROR_HANDLE)
            .writeLine(L"KelvaroReport: unknown option '" + options.unknown + L"'; --help lists the options");
        return kExitUnknownOption;
    }
    if (options.help) {
        return output.write(kReportHelp) ? kExitComplete : kExitIncomplete;
    }
    bool written = true;
    const int code =
        writeReport(options, [&](std::wstring_view line) { written = output.writeLine(line) && written; });
    return written ? code : kExitIncomplete;
}

}  // namespace

int runReportProgram(int argumentCount, const wchar_t* const* arguments) {
    prepareLibraryLoading();
    SetUnhandledExceptionFilter(endWithNote);
    const std::span<const wchar_t* const> all(arguments, static_cast<std::size_t>(argumentCount));
    const TextOutput output(STD_OUTPUT_HANDLE);
    const int code = run(reportOptions(all.empty() ? all : all.subspan(1)), output);
    if (output.isConsole() && ownsConsole()) {
        waitForEnter(output);
    }
    return code;
}
