#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

// Small questions to Windows, answered as texts.

/// "error 126: Module not found." with the system's text; without that the number alone.
std::wstring errorText(DWORD error);

/// "0x80040154: Class not registered." in the same way.
std::wstring resultText(HRESULT result);

/// A number as eight hexadecimal digits after "0x".
std::wstring hexText(std::uint32_t number);

/// The version in the file's fixed version record, "1.2.3.4"; empty when it has none.
std::wstring fileVersion(const std::wstring& path);

/// Full path of a loaded module; null is the program.
std::wstring modulePath(HMODULE module);

/// Folder of the program, without a backslash at the end.
std::wstring programFolder();

std::wstring systemFolder();

bool fileExists(const std::wstring& path);

/// "x86", "ARM64" and so on: the machine in the header of a program or library. Empty when the file cannot be
/// read or is none.
std::wstring machineOf(const std::wstring& path);

/// Why the library at that path did not load, with the machine that it was made for when that is why.
std::wstring loadErrorText(const std::wstring& path, DWORD error);

/// Whether both paths lead to one file, however they are written. False when either cannot be opened.
bool isSameFile(const std::wstring& first, const std::wstring& second);

/// "version 1.2.3.4" or "no version record".
std::wstring versionText(const std::wstring& path);

/// Whether a Kelvaro runs in this logon session.
bool isKelvaroRunning();

/// "yes" or "no".
const wchar_t* yesNo(bool yes);
