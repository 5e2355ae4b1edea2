#pragma once

#include <cstdint>

/// Under this key of HKEY_CURRENT_USER mail programs leave a key for each account.
inline constexpr wchar_t kUnreadMailKey[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UnreadMail";
/// The account's value of four bytes: its unread mails.
inline constexpr wchar_t kUnreadMailCount[] = L"MessageCount";

/// Unread mails over all accounts that the registry lists for the current user, at most 2^31 - 1. -1 when
/// there is no list, or when an account in it does not tell its count.
///
/// The accounts come in the registry's order, and the walk ends, with the sum so far, at an account whose
/// name is not shorter than the name before it: the room for a name is what the name before it took.
std::int32_t readUnreadMail();
