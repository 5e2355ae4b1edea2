#include "app/start_delay.h"

#include <string_view>

namespace {

constexpr std::wstring_view kDelayOption = L"-delay";
constexpr std::uint32_t kMsPerSecond = 1000;

}  // namespace

std::optional<std::uint32_t> startDelayMs(const std::wstring& commandLine) {
    const std::size_t option = commandLine.find(kDelayOption);
    if (option == std::wstring::npos) {
        return std::nullopt;
    }
    const int seconds = std::stoi(commandLine.substr(option + kDelayOption.size()));
    return static_cast<std::uint32_t>(seconds) * kMsPerSecond;
}
