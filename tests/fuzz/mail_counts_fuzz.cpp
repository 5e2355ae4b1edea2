#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

#include "stats/unread_mail_walk.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

struct Account {
    std::uint32_t nameLength;
    bool denied;
    /// The bytes of its count; nothing when there is no such value.
    std::optional<std::vector<std::uint8_t>> count;
};

/// A list of accounts that answers as the registry does.
class RegistryModel {
public:
    explicit RegistryModel(const std::vector<Account>& accounts) : accounts_(accounts) {}

    bool next(std::uint32_t index, std::uint32_t& nameLength) {
        current_ = index;
        if (index >= accounts_.size() || accounts_[index].nameLength >= nameLength) {
            return false;
        }
        nameLength = accounts_[index].nameLength;
        return true;
    }

    MailAccount count(std::uint32_t& count, std::uint32_t& bytes) const {
        const Account& account = accounts_.at(current_);
        if (account.denied) {
            return MailAccount::Denied;
        }
        if (!account.count) {
            return MailAccount::WithoutCount;
        }
        const std::uint32_t room = bytes;
        bytes = static_cast<std::uint32_t>(account.count->size());
        if (bytes > room) {
            return MailAccount::WithoutCount;
        }
        require(bytes <= sizeof(count), "no more room is claimed than there is");
        std::copy(account.count->begin(), account.count->end(), reinterpret_cast<std::uint8_t*>(&count));
        return MailAccount::Counted;
    }

private:
    const std::vector<Account>& accounts_;
    std::size_t current_ = 0;
};

/// Answers with whatever comes, for at most `input`'s length.
class FickleRegistry {
public:
    explicit FickleRegistry(FuzzedDataProvider& input) : input_(input) {}

    bool next(std::uint32_t, std::uint32_t& nameLength) {
        nameLength = input_.ConsumeIntegral<std::uint32_t>();
        return input_.ConsumeBool();
    }

    MailAccount count(std::uint32_t& count, std::uint32_t& bytes) {
        count = input_.ConsumeIntegral<std::uint32_t>();
        bytes = input_.ConsumeIntegral<std::uint32_t>();
        return static_cast<MailAccount>(input_.ConsumeIntegralInRange(0, 2));
    }

private:
    FuzzedDataProvider& input_;
};

std::vector<Account> someAccounts(FuzzedDataProvider& input) {
    std::vector<Account> accounts;
    const auto number = input.ConsumeIntegralInRange<std::size_t>(0, 64);
    for (std::size_t i = 0; i < number; ++i) {
        Account account{
            input.ConsumeIntegralInRange<std::uint32_t>(0, 1100), input.ConsumeBool(), std::nullopt};
        if (const auto bytes = input.ConsumeIntegralInRange<std::size_t>(0, 9); bytes != 9) {
            account.count.emplace(input.ConsumeBytes<std::uint8_t>(bytes));
        }
        accounts.push_back(account);
    }
    return accounts;
}

/// The accounts that are seen: names get shorter and shorter, the first has at most 1,023 characters.
std::vector<Account> seenAccounts(const std::vector<Account>& accounts) {
    std::vector<Account> seen;
    for (const Account& account : accounts) {
        if (account.nameLength >= (seen.empty() ? 1024 : seen.back().nameLength)) {
            break;
        }
        seen.push_back(account);
    }
    return seen;
}

std::int32_t promisedSum(const std::vector<Account>& seen) {
    double sum = 0.0;
    std::size_t room = 4;
    for (const Account& account : seen) {
        if (account.denied) {
            continue;
        }
        if (!account.count || account.count->size() > room) {
            return -1;
        }
        room = account.count->size();
        for (std::size_t byte = 0; byte < room; ++byte) {
            sum += static_cast<double>(std::uint32_t{(*account.count)[byte]} << (8 * byte));
        }
    }
    return static_cast<std::int32_t>(std::min(sum, 2147483647.0));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::vector<Account> accounts = someAccounts(input);
    RegistryModel registry(accounts);
    require(sumOfUnreadMail(registry) == promisedSum(seenAccounts(accounts)),
            "the figure is the sum over the accounts that are seen");
    FickleRegistry fickle(input);
    require(sumOfUnreadMail(fickle) >= -1, "the figure is a number of mails, or -1");
    return 0;
}
