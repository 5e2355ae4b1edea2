#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>

/// Everything that is left to chance in a run, and repeated by its seed.
class RandomSource {
public:
    explicit RandomSource(std::uint32_t seed) : engine_(seed) {}

    /// 0 to `limit` - 1.
    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(engine_() % limit); }
    bool chance(std::uint32_t oneOf) { return below(oneOf) == 0; }
    int percent() { return static_cast<int>(below(101)); }
    float scalar() { return static_cast<float>(percent()) / 100.0F; }

    template <typename Value, std::size_t count>
    Value oneOf(const std::array<Value, count>& values) {
        return values[below(count)];
    }

private:
    std::mt19937 engine_;
};
