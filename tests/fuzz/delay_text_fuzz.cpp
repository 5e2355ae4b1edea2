#include <algorithm>
#include <optional>

#include "app/run_entry.h"
#include "tests/fuzz/delay_digits.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

constexpr std::size_t kMostCharacters = 9;

/// What run_entry.h promises, written out.
std::optional<std::uint32_t> promisedDelay(std::wstring_view text) {
    const LeadingNumber number = leadingNumber(text);
    return number.digits == text.size() ? std::optional(static_cast<std::uint32_t>(number.value))
                                        : std::nullopt;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text = wideText(textOf(data, std::min(size, kMostCharacters)));
    const std::optional<std::uint32_t> delay = typedDelay(text);
    require(delay == promisedDelay(text), "digits are a delay, and nothing else is");
    if (delay) {
        require(*delay <= 999'999'999, "nine digits are below a billion");
        require(typedDelay(std::to_wstring(*delay)) == delay, "a delay that is shown again is the same");
        require(runEntryDelay(runEntryText("C:\\Kelvaro.exe", *delay)) == *delay,
                "what was typed is what the Run entry says");
    }
    return 0;
}
