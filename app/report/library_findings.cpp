#include "app/report/library_findings.h"

#include "app/report/system_facts.h"

bool reportLibrary(ReportWriter& writer,
                   const wchar_t* file,
                   const std::vector<std::wstring>& folders,
                   HMODULE module,
                   DWORD error) {
    writer.value(L"Library", file);
    std::wstring first;
    for (const std::wstring& folder : folders) {
        const std::wstring path = folder + L'\\' + file;
        const bool there = fileExists(path);
        writer.value(L"Looked for", path + (there ? L": there" : L": not there"));
        if (there && first.empty()) {
            first = path;
        }
    }
    if (module == nullptr) {
        writer.value(L"Loaded", L"no, " + loadErrorText(first, error));
        return false;
    }
    const std::wstring path = modulePath(module);
    writer.value(L"Loaded", path);
    writer.value(L"Version of the library", versionText(path));
    return true;
}

void reportEntries(ReportWriter& writer, std::size_t count, const std::vector<std::wstring>& missing) {
    if (missing.empty()) {
        writer.value(L"Entries", L"all of " + std::to_wstring(count));
        return;
    }
    writer.value(L"Entries",
                 std::to_wstring(missing.size()) + L" of " + std::to_wstring(count) + L" missing");
    for (const std::wstring& name : missing) {
        writer.value(L"Missing entry", name);
    }
}

std::wstring wideFromAscii(std::string_view text) {
    return std::wstring(text.begin(), text.end());
}
