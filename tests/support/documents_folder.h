#pragma once

#include <string>

/// Makes a folder the Documents folder of this process, whose registry is redirected by a RegistryOverride.
void setDocumentsFolder(const std::wstring& path);

/// Whether the system gives this process that folder. Windows may know the user's own one already.
bool documentsFolderIs(const std::wstring& path);

inline constexpr char kDocumentsAreTheUsers[] = "Windows gives this process the user's own Documents folder";
