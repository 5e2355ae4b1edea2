#include "standins/built_files.h"

#include <windows.h>

#include <array>
#include <stdexcept>

namespace Standins {

namespace {

constexpr wchar_t kTopFile[] = L"test_programs.txt";
constexpr std::size_t kLongestPath = 32'768;

std::filesystem::path programFolder() {
    std::wstring path(kLongestPath, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
}

}  // namespace

std::filesystem::path buildFolder() {
    for (std::filesystem::path folder = programFolder(); folder.has_relative_path();
         folder = folder.parent_path()) {
        if (exists(folder / kTopFile)) {
            return folder;
        }
    }
    throw std::runtime_error("The program does not lie where it was built");
}

std::filesystem::path outputFolder() {
    return (buildFolder() / KELVARO_OUTPUT_FROM_BUILD).lexically_normal();
}

}  // namespace Standins
