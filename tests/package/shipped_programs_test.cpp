#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "standins/built_files.h"

// What the files that people download say of themselves.

namespace {

constexpr wchar_t kVersion[] = L"" KELVARO_VERSION;

/// Names without the extension.
constexpr std::array kPrograms{KELVARO_PROGRAMS};

std::wstring pathOf(const std::wstring& program) {
    return (Standins::outputFolder() / (program + L".exe")).wstring();
}

/// The version resource of a file.
class VersionResource {
public:
    explicit VersionResource(const std::wstring& path)
        : bytes_(GetFileVersionInfoSizeW(path.c_str(), nullptr)) {
        EXPECT_FALSE(bytes_.empty()) << "no version resource";
        GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(bytes_.size()), bytes_.data());
    }

    std::wstring text(const std::wstring& name) const {
        const auto [value, length] = query(L"\\StringFileInfo\\040904B0\\" + name);
        return value != nullptr && length != 0 ? static_cast<const wchar_t*>(value) : L"";
    }

    /// The four numbers of the file's version and of the product's, with dots.
    std::pair<std::wstring, std::wstring> numbers() const {
        const auto* const fixed = static_cast<const VS_FIXEDFILEINFO*>(query(L"\\").first);
        if (fixed == nullptr) {
            return {};
        }
        return {dotted(fixed->dwFileVersionMS, fixed->dwFileVersionLS),
                dotted(fixed->dwProductVersionMS, fixed->dwProductVersionLS)};
    }

private:
    std::pair<const void*, UINT> query(const std::wstring& block) const {
        void* value = nullptr;
        UINT length = 0;
        VerQueryValueW(bytes_.data(), block.c_str(), &value, &length);
        return {value, length};
    }

    static std::wstring dotted(DWORD upper, DWORD lower) {
        return std::to_wstring(HIWORD(upper)) + L'.' + std::to_wstring(LOWORD(upper)) + L'.' +
               std::to_wstring(HIWORD(lower)) + L'.' + std::to_wstring(LOWORD(lower));
    }

    std::vector<std::uint8_t> bytes_;
};

std::string manifestOf(const std::wstring& path) {
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    const HRSRC found = FindResourceW(module, CREATEPROCESS_MANIFEST_RESOURCE_ID, RT_MANIFEST);
    if (found == nullptr) {
        return {};
    }
    std::string text(static_cast<const char*>(LockResource(LoadResource(module, found))),
                     SizeofResource(module, found));
    FreeLibrary(module);
    return text;
}

std::string narrow(const std::wstring& ascii) {
    return {ascii.begin(), ascii.end()};
}

TEST(ShippedPrograms, CarryTheVersionInTheirVersionResource) {
    for (const std::wstring program : kPrograms) {
        SCOPED_TRACE(narrow(program));
        const VersionResource version(pathOf(program));
        const std::wstring four = std::wstring(kVersion) + L".0";
        EXPECT_EQ(version.numbers(), std::make_pair(four, four));
        EXPECT_EQ(version.text(L"FileVersion"), kVersion);
        EXPECT_EQ(version.text(L"ProductVersion"), kVersion);
        EXPECT_EQ(version.text(L"OriginalFilename"), program + L".exe");
    }
}

TEST(ShippedPrograms, CarryTheVersionInTheirManifest) {
    for (const std::wstring program : kPrograms) {
        SCOPED_TRACE(narrow(program));
        const std::string identity = "<assemblyIdentity type=\"win32\" name=\"" + narrow(program) +
                                     "\" version=\"" + narrow(kVersion) + ".0\"";
        EXPECT_NE(manifestOf(pathOf(program)).find(identity), std::string::npos)
            << manifestOf(pathOf(program));
    }
}

}  // namespace
