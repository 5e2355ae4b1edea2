#include "app/report/text_output.h"

#include <algorithm>
#include <string>

namespace {

bool isConsoleHandle(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != FALSE;
}

std::wstring withWindowsLineEnds(std::wstring_view text) {
    std::wstring result;
    result.reserve(text.size() + 2);
    for (const wchar_t character : text) {
        if (character == L'\n') {
            result += L'\r';
        }
        result += character;
    }
    return result;
}

bool writeToConsole(HANDLE console, std::wstring_view text) {
    while (!text.empty()) {
        DWORD written = 0;
        if (WriteConsoleW(console, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) ==
                FALSE ||
            written == 0) {
            return false;
        }
        text.remove_prefix(std::min<std::size_t>(written, text.size()));
    }
    return true;
}

// Halves of a pair that stand alone become the replacement character.
std::string utf8(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    std::string bytes(static_cast<std::size_t>(
                          WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr)),
                      '\0');
    WideCharToMultiByte(
        CP_UTF8, 0, text.data(), length, bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr);
    return bytes;
}

bool writeToFile(HANDLE file, std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD written = 0;
        if (WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) == FALSE ||
            written == 0) {
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

}  // namespace

TextOutput::TextOutput(DWORD standardHandle) : TextOutput(GetStdHandle(standardHandle)) {}

TextOutput::TextOutput(HANDLE file) : handle_(file), isConsole_(isConsoleHandle(file)) {}

bool TextOutput::write(std::wstring_view text) const {
    const std::wstring lines = withWindowsLineEnds(text);
    return isConsole_ ? writeToConsole(handle_, lines) : writeToFile(handle_, utf8(lines));
}

bool TextOutput::writeLine(std::wstring_view text) const {
    return write(std::wstring(text) + L'\n');
}
