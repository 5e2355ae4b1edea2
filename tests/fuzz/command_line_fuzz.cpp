#include <cwctype>
#include <optional>
#include <stdexcept>

#include "app/start_delay.h"
#include "tests/fuzz/delay_digits.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

enum class Outcome { NoOption, Delay, NoNumber, TooLarge };

struct Start {
    Outcome outcome;
    std::uint32_t delayMs = 0;

    friend bool operator==(const Start&, const Start&) = default;
};

Start actualStart(const std::wstring& line) {
    try {
        const std::optional<std::uint32_t> delay = startDelayMs(line);
        return delay ? Start{Outcome::Delay, *delay} : Start{Outcome::NoOption};
    } catch (const std::invalid_argument&) {
        return {Outcome::NoNumber};
    } catch (const std::out_of_range&) {
        return {Outcome::TooLarge};
    }
}

/// What start_delay.h promises, written out.
Start promisedStart(std::wstring_view line) {
    constexpr std::wstring_view kOption = L"-delay";
    constexpr std::uint64_t kGreatest = 0x7FFF'FFFF;
    const std::size_t option = line.find(kOption);
    if (option == std::wstring_view::npos) {
        return {Outcome::NoOption};
    }
    line.remove_prefix(option + kOption.size());
    while (!line.empty() && std::iswspace(static_cast<std::wint_t>(line.front())) != 0) {
        line.remove_prefix(1);
    }
    const bool negative = !line.empty() && line.front() == L'-';
    if (negative || (!line.empty() && line.front() == L'+')) {
        line.remove_prefix(1);
    }
    const LeadingNumber number = leadingNumber(line);
    if (number.digits == 0) {
        return {Outcome::NoNumber};
    }
    if (number.beyond40Bits || number.value > kGreatest + (negative ? 1 : 0)) {
        return {Outcome::TooLarge};
    }
    const std::uint64_t ms = number.value * 1000;
    return {Outcome::Delay, static_cast<std::uint32_t>(negative ? 0 - ms : ms)};
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring line = wideText(textOf(data, size));
    require(actualStart(line) == promisedStart(line), "the delay is the number after the first option");
    return 0;
}
