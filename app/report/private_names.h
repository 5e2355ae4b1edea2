#pragma once

#include <string>
#include <vector>

/// What a report must not tell. Letters of either case are the same in all of them. One name may be the
/// beginning of another, so the longer ones come first.
struct PrivateNames {
    /// Full paths of the user's profile, in every form that Windows uses, without a backslash at the end.
    std::vector<std::wstring> profileFolders;
    /// Names, without their paths, of the folders that hold the profiles of all users, such as "Users".
    std::vector<std::wstring> usersFolders;
    /// Names of the machine's users, and the words that these consist of.
    std::vector<std::wstring> users;
    /// Names of the computer and of its domain.
    std::vector<std::wstring> computers;
};

/// Those of this machine and of the user that runs this program. What Windows does not tell is left out.
PrivateNames currentPrivateNames();

/// The text with "%USERPROFILE%" in the place of the user's profile folder, and with "<user>" and
/// "<computer>" in the place of names: those of other users' profile folders, those of servers in paths, and
/// whole words, with an "s" behind them as well. Names that are common words, such as "Admin" or "Speaker",
/// single letters of ASCII and numbers are left where they do not name a profile folder: they say nothing
/// about anybody, and the report could not be read without them.
std::wstring withoutPrivateNames(std::wstring text, const PrivateNames& names);
