#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <string>
#include <string_view>

namespace Standins {

/// A text field of a shared record: narrow text as vendors have it, or UTF-16. It may be full, and has no
/// terminator then. A reader in another process may see a change half made; never characters beyond the
/// field.
template <typename Character, std::size_t length>
class SharedText {
public:
    /// Cuts what does not fit.
    void set(std::basic_string_view<Character> text) noexcept {
        for (std::size_t i = 0; i < length; ++i) {
            characters_[i].store(i < text.size() ? text[i] : Character{}, std::memory_order_relaxed);
        }
    }

    /// Copies the whole field.
    void copyTo(Character* field) const noexcept {
        for (std::size_t i = 0; i < length; ++i) {
            field[i] = characters_[i].load(std::memory_order_relaxed);
        }
    }

    /// Up to the terminator.
    std::basic_string<Character> text() const {
        std::basic_string<Character> field(length, Character{});
        copyTo(field.data());
        field.resize(std::min(field.find(Character{}), length));
        return field;
    }

private:
    std::array<std::atomic<Character>, length> characters_;
};

}  // namespace Standins
