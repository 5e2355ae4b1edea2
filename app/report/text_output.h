#pragma once

#include <windows.h>

#include <string_view>

/// One of the process's standard outputs or a file: shows text on a console in every script, and writes UTF-8
/// without a byte order mark into a file or a pipe. Nothing is kept back: what was written is out.
class TextOutput {
public:
    /// STD_OUTPUT_HANDLE or STD_ERROR_HANDLE.
    explicit TextOutput(DWORD standardHandle);

    /// A file that is open for writing, and stays open for as long as this is used.
    explicit TextOutput(HANDLE file);

    /// Line ends are "\n" in `text` and "\r\n" outside. False when not everything could be written.
    bool write(std::wstring_view text) const;

    /// The same and the end of the line.
    bool writeLine(std::wstring_view text) const;

    bool isConsole() const { return isConsole_; }

private:
    HANDLE handle_;
    bool isConsole_;
};
