#pragma once

#include <string>

/// Writes the LCD library's registration, as the vendor's LCD manager does, into the registry of this process
/// (redirected by a RegistryOverride or not).
void registerLcdLibrary(const std::wstring& path);

/// Removes the registration; nothing when there is none.
void unregisterLcdLibrary();

/// Registers a library for the length of a test that starts another process, and restores what was there.
/// Tests that use it must not run at the same time in one Wine prefix.
class LcdRegistrationScope {
public:
    /// An empty path means that no library is registered.
    explicit LcdRegistrationScope(const std::wstring& path);
    ~LcdRegistrationScope();
    LcdRegistrationScope(const LcdRegistrationScope&) = delete;
    LcdRegistrationScope& operator=(const LcdRegistrationScope&) = delete;

private:
    std::wstring before_;
};
