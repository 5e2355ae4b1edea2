#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

/// The inputs of one random run. Their number is that of the long form with KELVARO_ALL; KELVARO_SEED repeats
/// a run. Both are printed with the number of inputs that the run took.
class RandomInputs {
public:
    /// `subject` says what gets the inputs. It is borrowed.
    RandomInputs(const char* subject, unsigned shortForm, unsigned longForm)
        : subject_(subject),
          seed_(seedFromEnvironment()),
          total_(std::getenv("KELVARO_ALL") != nullptr ? longForm : shortForm),
          random_(seed_) {}
    ~RandomInputs() { std::printf("%s: %u inputs, KELVARO_SEED=%u\n", subject_, taken_, seed_); }
    RandomInputs(const RandomInputs&) = delete;
    RandomInputs& operator=(const RandomInputs&) = delete;

    /// False when the run is over.
    bool next() {
        if (taken_ == total_) {
            return false;
        }
        ++taken_;
        return true;
    }

    /// The same inputs once more.
    void restart() {
        taken_ = 0;
        random_.seed(seed_);
    }

    /// For a failure's text: how to see it again.
    std::string place() const {
        return std::string(subject_) + ", input " + std::to_string(taken_) +
               ", KELVARO_SEED=" + std::to_string(seed_);
    }

    unsigned taken() const { return taken_; }
    unsigned total() const { return total_; }

    std::uint32_t number() { return static_cast<std::uint32_t>(random_()); }
    std::uint64_t longNumber() { return std::uint64_t{number()} << 32 | number(); }
    unsigned below(std::size_t limit) { return static_cast<unsigned>(number() % limit); }
    bool chance(unsigned oneOf) { return below(oneOf) == 0; }

    template <typename Choices>
    auto oneOf(const Choices& choices) {
        return choices[below(std::size(choices))];
    }

    std::vector<std::uint8_t> bytes(std::size_t count) {
        std::vector<std::uint8_t> result(count);
        for (std::uint8_t& value : result) {
            value = static_cast<std::uint8_t>(number());
        }
        return result;
    }

private:
    static unsigned seedFromEnvironment() {
        const char* const text = std::getenv("KELVARO_SEED");
        return text != nullptr ? static_cast<unsigned>(std::strtoul(text, nullptr, 10))
                               : std::random_device{}();
    }

    const char* subject_;
    unsigned seed_;
    unsigned total_;
    unsigned taken_ = 0;
    std::mt19937 random_;
};
