#include "tests/bundle/contained_process.h"

#include <mutex>

#include "framework/core/unique_resource.h"
#include "tests/bundle/file_content.h"
#include "tests/bundle/utf8.h"

namespace Bundle {

namespace {

// For what was ended by force.
constexpr UINT kEndedCode = 99;

/// Ends all processes in it when it is closed, by the system as well.
Panelix::UniqueHandle makeJob() {
    Panelix::UniqueHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    return job;
}

bool sameName(const wchar_t* variable, const std::wstring& name) {
    const std::wstring text = variable;
    return CompareStringOrdinal(text.c_str(), static_cast<int>(text.find(L'=', 1)), name.c_str(), -1, TRUE) ==
           CSTR_EQUAL;
}

/// This process's variables with the changes, as CreateProcessW takes them.
std::wstring environmentBlock(const Environment& changes) {
    std::wstring block;
    wchar_t* const own = GetEnvironmentStringsW();
    for (const wchar_t* variable = own; *variable != L'\0'; variable += wcslen(variable) + 1) {
        bool changed = false;
        for (const auto& [name, value] : changes) {
            changed = changed || sameName(variable, fromUtf8(name));
        }
        if (!changed) {
            block.append(variable).push_back(L'\0');
        }
    }
    FreeEnvironmentStringsW(own);
    for (const auto& [name, value] : changes) {
        block.append(fromUtf8(name)).append(L"=").append(fromUtf8(value)).push_back(L'\0');
    }
    block.push_back(L'\0');
    return block;
}

Panelix::UniqueFile openInheritable(const wchar_t* path, DWORD access, DWORD disposition) {
    SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
    return Panelix::UniqueFile(CreateFileW(path,
                                           access,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                           &inheritable,
                                           disposition,
                                           FILE_ATTRIBUTE_NORMAL,
                                           nullptr));
}

/// Starts the program in the job, with its output in the file.
Panelix::UniqueHandle start(const Run& run, HANDLE job, const std::filesystem::path& outputFile) {
    // One start at a time: a program that starts would inherit the files of another, too.
    static std::mutex starting;
    const std::lock_guard lock(starting);
    const Panelix::UniqueFile input = openInheritable(L"NUL", GENERIC_READ, OPEN_EXISTING);
    const Panelix::UniqueFile output = openInheritable(outputFile.c_str(), GENERIC_WRITE, CREATE_ALWAYS);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.get();
    startup.hStdOutput = output.get();
    startup.hStdError = output.get();
    std::wstring line = L"\"" + run.program.wstring() + L"\" " + fromUtf8(run.arguments);
    std::wstring environment = environmentBlock(run.environment);
    PROCESS_INFORMATION started{};
    if (CreateProcessW(run.program.c_str(),
                       line.data(),
                       nullptr,
                       nullptr,
                       TRUE,
                       CREATE_SUSPENDED | CREATE_UNICODE_ENVIRONMENT,
                       environment.data(),
                       run.program.parent_path().c_str(),
                       &startup,
                       &started) == FALSE) {
        return {};
    }
    Panelix::UniqueHandle process(started.hProcess);
    const Panelix::UniqueHandle thread(started.hThread);
    if (AssignProcessToJobObject(job, process.get()) == FALSE) {
        TerminateProcess(process.get(), kEndedCode);
        return {};
    }
    ResumeThread(thread.get());
    return process;
}

Ending waitForEnd(HANDLE process, HANDLE stop, std::chrono::milliseconds limit) {
    const HANDLE either[] = {process, stop};
    switch (WaitForMultipleObjects(2, either, FALSE, static_cast<DWORD>(limit.count()))) {
        case WAIT_OBJECT_0:
            return Ending::ByItself;
        case WAIT_TIMEOUT:
            return Ending::Late;
        default:
            return Ending::Stopped;
    }
}

}  // namespace

RunEnd runContained(const Run& run, HANDLE stop, const std::filesystem::path& scratch) {
    const Panelix::UniqueHandle job = makeJob();
    const Panelix::UniqueHandle process = start(run, job.get(), scratch);
    RunEnd end;
    if (process) {
        end.ending = waitForEnd(process.get(), stop, run.limit);
        TerminateJobObject(job.get(), kEndedCode);
        WaitForSingleObject(process.get(), INFINITE);
        GetExitCodeProcess(process.get(), &end.code);
    }
    if (exists(scratch)) {
        end.output = contentOf(scratch);
    }
    std::error_code ignored;
    std::filesystem::remove(scratch, ignored);
    return end;
}

}  // namespace Bundle
