#pragma once

#include <string>

namespace Standins {

/// What became of a change of the registration, with a text for the user.
struct RegistrationOutcome {
    bool done;
    std::wstring message;
};

/// Makes the library at `path` the one that programs find as the keyboard's LCD library, for all users of
/// this machine, which takes administrator's rights on Windows. Another library that is registered is left
/// alone, unless `force` is set.
RegistrationOutcome registerLibrary(const std::wstring& path, bool force);

/// Takes the registration of the library at `path` back. No registration at all is a success; that of another
/// library is left alone, unless `force` is set.
RegistrationOutcome unregisterLibrary(const std::wstring& path, bool force);

}  // namespace Standins
