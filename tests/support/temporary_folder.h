#pragma once

#include <string>
#include <vector>

/// An empty folder that goes, with all files in it, with the object.
class TemporaryFolder {
public:
    /// Fails the test when the folder cannot be made.
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Full path without a backslash at the end.
    const std::wstring& path() const { return path_; }

    /// Names of the files in it, without the folder.
    std::vector<std::wstring> files() const;

private:
    std::wstring path_;
};
