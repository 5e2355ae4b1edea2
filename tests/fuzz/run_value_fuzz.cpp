#include <fuzzer/FuzzedDataProvider.h>

#include <optional>
#include <stdexcept>

#include "app/run_entry.h"
#include "app/start_delay.h"
#include "tests/fuzz/delay_digits.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

constexpr std::string_view kOption = "-delay";
constexpr std::uint32_t kGreatestDelay = 0x7FFF'FFFF;
/// Two quotes, a blank, the option and ten digits.
constexpr std::size_t kMostAdded = 2 + 1 + kOption.size() + 10;

/// What run_entry.h promises, written out.
std::uint32_t promisedDelay(std::string_view text) {
    const std::size_t option = text.find(kOption);
    if (option == std::string_view::npos) {
        return 0;
    }
    text.remove_prefix(option + kOption.size());
    const LeadingNumber number = leadingNumber(text);
    const bool valid = number.digits == text.size() && !number.beyond40Bits && number.value <= kGreatestDelay;
    return valid ? static_cast<std::uint32_t>(number.value) : 0;
}

/// The delay that a start with this command line makes, in ms; nothing for none or for one that ends the
/// start.
std::optional<std::uint32_t> startWith(const std::string& entry) {
    try {
        return startDelayMs(wideText(entry));
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }
}

void checkWritten(const std::string& path, std::uint32_t delay) {
    const std::string entry = runEntryText(path, delay);
    require(entry.starts_with('"' + path + '"'), "the path stands in quotes at the start");
    require(entry.size() <= path.size() + kMostAdded, "an entry is little longer than its path");
    if (path.find(kOption) != std::string::npos) {
        return;
    }
    const bool readable = delay <= kGreatestDelay;
    require(runEntryDelay(entry) == (readable ? delay : 0), "what was written is read back");
    const std::optional<std::uint32_t> started = startWith(entry);
    require(started == (readable && delay != 0 ? std::optional(delay * 1000) : std::nullopt),
            "the program started by the entry waits as long as the entry says");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto delay = input.ConsumeIntegral<std::uint32_t>();
    const std::string path = input.ConsumeRandomLengthString(300);
    checkWritten(path, delay);
    checkWritten(path, delay % 1000);
    const std::string text = input.ConsumeRemainingBytesAsString();
    require(runEntryDelay(text) == promisedDelay(text), "the delay is the digits directly after the option");
    return 0;
}
