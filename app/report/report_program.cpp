#include "app/report/report_program.h"

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <span>
#include <string>

#include "app/library_loading.h"
#include "app/report/call_watch.h"
#include "app/report/private_names.h"
#include "app/report/report.h"
#include "app/report/system_facts.h"
#include "app/report/text_output.h"
#include "framework/core/unique_resource.h"

namespace {

/// The module that an address belongs to, without its folder; empty for none.
std::wstring moduleAt(void* address) {
    HMODULE module = nullptr;
    // Null, where a call through an entry that is not there ends, would be taken for the program itself.
    if (address == nullptr || GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                                     GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                                 static_cast<const wchar_t*>(address),
                                                 &module) == FALSE) {
        return {};
    }
    const std::wstring path = modulePath(module);
    return path.substr(path.find_last_of(L'\\') + 1);
}

/// Where the report goes.
struct Destination {
    TextOutput text{STD_OUTPUT_HANDLE};
    /// A file, and not the standard output.
    bool isFile = false;
};

/// The process's own, since Windows calls a function after a fault without telling it anything of ours.
Destination& destination() {
    static Destination own;
    return own;
}

/// Whether the console window was made for this program: it goes with the program's end.
bool ownsConsole() {
    DWORD processes[2] = {};
    return GetConsoleProcessList(processes, 2) == 1;
}

/// Keeps a console window open that would close with the program, until Enter is pressed.
void keepOwnWindow() {
    const TextOutput output(STD_OUTPUT_HANDLE);
    if (!output.isConsole() || !ownsConsole()) {
        return;
    }
    output.write(L"\nPress Enter to close this window. ");
    wchar_t key = 0;
    DWORD read = 0;
    while (ReadConsoleW(GetStdHandle(STD_INPUT_HANDLE), &key, 1, &read, nullptr) != FALSE && read == 1 &&
           key != L'\n') {
    }
}

/// Ends the process in the middle of the report, whose last section says why. No driver's code runs any more,
/// which could hang as well.
void endEarly(const std::wstring& why) {
    const Destination& whereTo = destination();
    whereTo.text.writeLine(L"\nThe report ends here, in the section above: " + why);
    if (whereTo.isFile) {
        TextOutput(STD_OUTPUT_HANDLE).writeLine(L"It ends early: " + why);
    }
    keepOwnWindow();
    TerminateProcess(GetCurrentProcess(), kExitIncomplete);
}

// A fault in a driver's code: says where, since the section's title stands above. The system's own box would
// not get into the text.
LONG WINAPI endAfterFault(EXCEPTION_POINTERS* fault) noexcept {
    const auto code = static_cast<std::uint32_t>(fault->ExceptionRecord->ExceptionCode);
    const std::wstring module = moduleAt(fault->ExceptionRecord->ExceptionAddress);
    endEarly(L"exception " + hexText(code) + L" in " +
             (module.empty() ? L"unknown code" : withoutPrivateNames(module, currentPrivateNames())));
    return EXCEPTION_EXECUTE_HANDLER;
}

void endHeldUp() {
    endEarly(L"a call has not returned for " + std::to_wstring(CallWatch::kSeconds) + L" seconds");
}

void complain(const std::wstring& sentence) {
    TextOutput(STD_ERROR_HANDLE).writeLine(L"KelvaroReport: " + sentence);
}

int writeWatchedReport(const ReportOptions& options) {
    bool written = true;
    CallWatch watch(endHeldUp);
    const int code = writeReport(options, [&](std::wstring_view line) {
        watch.beginLine();
        written = destination().text.writeLine(line) && written;
        watch.endLine();
    });
    return written ? code : kExitIncomplete;
}

/// "Kelvaro report DATE TIME.txt" in Documents; empty when Windows does not tell where that is.
std::wstring newFileInDocuments() {
    std::array<wchar_t, MAX_PATH> folder{};
    if (SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT, folder.data()) != S_OK) {
        return {};
    }
    SYSTEMTIME now{};
    GetLocalTime(&now);
    std::array<wchar_t, 64> name{};
    std::swprintf(name.data(),
                  name.size(),
                  L"\\Kelvaro report %04d-%02d-%02d %02d.%02d.%02d.txt",
                  now.wYear,
                  now.wMonth,
                  now.wDay,
                  now.wHour,
                  now.wMinute,
                  now.wSecond);
    return std::wstring(folder.data()) + name.data();
}

/// Writes the report to a file. False when that cannot be opened.
bool writeReportFile(const ReportOptions& options, const std::wstring& path, DWORD disposition, int& code) {
    const Panelix::UniqueFile file(CreateFileW(
        path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        complain(L"'" + path + L"' cannot be written: " + errorText(GetLastError()));
        code = kExitIncomplete;
        return false;
    }
    TextOutput(STD_OUTPUT_HANDLE).writeLine(L"The report goes to " + path + L", which takes some seconds.");
    destination() = {TextOutput(file.get()), true};
    // Older programs recognise UTF-8 by this mark only.
    const bool marked = destination().text.write(L"\xFEFF");
    code = writeWatchedReport(options);
    destination() = {};
    code = marked ? code : kExitIncomplete;
    return true;
}

/// Whether the program that the user has for such files was started.
bool openFile(const std::wstring& path) {
    const HRESULT com = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    constexpr INT_PTR kLastError = 32;
    const HINSTANCE result = ShellExecuteW(nullptr, L"open", path.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    if (SUCCEEDED(com)) {
        CoUninitialize();
    }
    return reinterpret_cast<INT_PTR>(result) > kLastError;
}

/// Whether the console window has nothing more to tell goes to `shown`.
int run(const ReportOptions& options, bool& shown) {
    if (!options.problem.empty()) {
        complain(options.problem + L"; --help lists the options");
        return kExitWrongCommandLine;
    }
    if (options.help) {
        return TextOutput(STD_OUTPUT_HANDLE).write(kReportHelp) ? kExitComplete : kExitIncomplete;
    }
    int code = kExitComplete;
    if (!options.output.empty()) {
        writeReportFile(options, options.output, CREATE_ALWAYS, code);
        return code;
    }
    if (!options.save) {
        return writeWatchedReport(options);
    }
    const std::wstring path = newFileInDocuments();
    if (path.empty()) {
        complain(L"Windows does not tell where Documents is");
        return kExitIncomplete;
    }
    if (writeReportFile(options, path, CREATE_NEW, code)) {
        shown = openFile(path);
        if (!shown) {
            complain(L"'" + path + L"' cannot be opened; it is written all the same");
        }
    }
    return code;
}

}  // namespace

int runReportProgram(int argumentCount, const wchar_t* const* arguments) {
    prepareLibraryLoading();
    SetUnhandledExceptionFilter(endAfterFault);
    const std::span<const wchar_t* const> all(arguments, static_cast<std::size_t>(argumentCount));
    destination() = {};
    bool shown = false;
    const int code = run(reportOptions(all.empty() ? all : all.subspan(1)), shown);
    if (!shown) {
        keepOwnWindow();
    }
    return code;
}
