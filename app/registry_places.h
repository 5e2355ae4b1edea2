#pragma once

/// Where the registry keeps what the program reads and writes of itself.
namespace RegistryPlaces {

/// The program's start entry: a value of this key of HKEY_CURRENT_USER.
inline constexpr char kRunKey[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
inline constexpr char kRunValue[] = "Kelvaro";

/// Its folder as an installer leaves it: a value of this key of HKEY_LOCAL_MACHINE.
inline constexpr char kProgramKey[] = "Software\\Kelvaro";
inline constexpr char kInstallFolderValue[] = "InstallDir";

}  // namespace RegistryPlaces
