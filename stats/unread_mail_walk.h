#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

/// Characters that an account's name may have, the terminator among them.
inline constexpr std::uint32_t kMailAccountNameLength = 1024;

/// What asking an account for its count has come to.
enum class MailAccount { Denied, WithoutCount, Counted };

/// Unread mails over all `accounts`, at most 2^31 - 1; -1 when one that is not denied does not tell its
/// count.
///
/// `accounts` answers as the registry does:
/// `bool next(std::uint32_t index, std::uint32_t& nameLength)` goes to the account of that number.
/// `nameLength` is the room for its name, terminator included, and becomes the name's length without it.
/// False at the end of the list, and for a name that has no room. `MailAccount count(std::uint32_t& count,
/// std::uint32_t& bytes)` writes the account's count. `bytes` is the room for it and becomes what the value
/// took; a value that has no room is no count.
template <typename Accounts>
std::int32_t sumOfUnreadMail(Accounts& accounts) {
    std::uint64_t sum = 0;
    // Set once, each call leaves in them what the next one gets as its limit.
    std::uint32_t nameLength = kMailAccountNameLength;
    std::uint32_t bytes = sizeof(std::uint32_t);
    for (std::uint32_t index = 0; accounts.next(index, nameLength); ++index) {
        std::uint32_t count = 0;
        const MailAccount account = accounts.count(count, bytes);
        if (account == MailAccount::WithoutCount) {
            return -1;
        }
        if (account == MailAccount::Counted) {
            sum += count;
        }
    }
    return static_cast<std::int32_t>(std::min<std::uint64_t>(sum, std::numeric_limits<std::int32_t>::max()));
}
