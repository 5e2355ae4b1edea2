#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <string_view>

namespace Standins {

/// A text field of a shared record. It may be full, and has no terminator then. A reader in another process
/// may see a change half made; never bytes beyond the field.
template <std::size_t length>
class SharedText {
public:
    void set(std::string_view text) noexcept {
        for (std::size_t i = 0; i < length; ++i) {
            bytes_[i].store(i < text.size() ? text[i] : '\0', std::memory_order_relaxed);
        }
    }

    /// Copies the whole field.
    void copyTo(char* bytes) const noexcept {
        std::transform(bytes_.begin(), bytes_.end(), bytes, [](const std::atomic<char>& value) {
            return value.load(std::memory_order_relaxed);
        });
    }

private:
    std::array<std::atomic<char>, length> bytes_;
};

}  // namespace Standins
