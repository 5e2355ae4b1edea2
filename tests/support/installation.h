#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "framework/core/unique_resource.h"

inline constexpr wchar_t kRunKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
inline constexpr wchar_t kProgramKey[] = L"Software\\Kelvaro";

/// The program's entry under the Run key of the (perhaps redirected) current user, nothing when there is none
/// or when it is no text.
std::optional<std::wstring> runValue();

/// The user's own Run entry and the machine's installation entry of the program, both taken away for the
/// length of a test that starts another process, and put back afterwards. Such tests must not run at the same
/// time in one session.
class CleanProgramEntries {
public:
    CleanProgramEntries();
    ~CleanProgramEntries();
    CleanProgramEntries(const CleanProgramEntries&) = delete;
    CleanProgramEntries& operator=(const CleanProgramEntries&) = delete;

    static void setRunValue(const std::wstring& text);
    static void setInstallFolder(const std::wstring& folder);
    static void removeInstallFolder();

private:
    std::optional<std::wstring> runValue_;
    std::optional<std::wstring> installFolder_;
};

/// A folder with a file Kelvaro.exe in it, as the installer leaves it, without the registry entry. Gone with
/// the object.
class InstallationFolder {
public:
    /// `suffix` ends the folder's name.
    explicit InstallationFolder(const std::wstring& suffix = {});
    ~InstallationFolder();
    InstallationFolder(const InstallationFolder&) = delete;
    InstallationFolder& operator=(const InstallationFolder&) = delete;

    const std::wstring& path() const { return path_; }
    std::wstring executable() const { return path_ + L"\\Kelvaro.exe"; }

private:
    std::wstring path_;
};
