#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "tests/support/import_override.h"

/// Records this program's calls of an imported function for as long as it lives, and lets them go through or,
/// when told to, fail. One at a time per function.
template <auto function>
class ImportRecorder;

template <typename Result, typename... Arguments, Result (*function)(Arguments...)>
class ImportRecorder<function> {
public:
    /// What a call returned; nothing to compare when the function returns nothing.
    using Returned = std::conditional_t<std::is_void_v<Result>, std::monostate, Result>;

    struct Call {
        std::tuple<Arguments...> arguments;
        Returned result;
    };

    /// As for ImportOverride.
    ImportRecorder(const std::string& module, const std::string& name) : override_(module, name, record) {
        calls_.clear();
        instead_.reset();
        onCall_ = nullptr;
        original_ = override_.template original<Result(Arguments...)>();
    }

    /// From now on the calls return this and go no further.
    void failWith(Returned result) { instead_ = result; }
    void goThroughAgain() { instead_.reset(); }

    /// Called at the beginning of each call.
    void onCall(std::function<void()> action) { onCall_ = std::move(action); }

    const std::vector<Call>& calls() const { return calls_; }
    std::size_t count() const { return calls_.size(); }

    std::vector<Returned> results() const {
        std::vector<Returned> all;
        for (const Call& call : calls_) {
            all.push_back(call.result);
        }
        return all;
    }

    /// The argument at this place, from 0, of every call.
    template <std::size_t index = 0>
    auto arguments() const {
        std::vector<std::tuple_element_t<index, std::tuple<Arguments...>>> all;
        for (const Call& call : calls_) {
            all.push_back(std::get<index>(call.arguments));
        }
        return all;
    }

private:
    static Result record(Arguments... arguments) {
        // A copy, because the action may set another one.
        if (const auto action = onCall_) {
            action();
        }
        if constexpr (std::is_void_v<Result>) {
            calls_.push_back({{arguments...}, {}});
            original_(arguments...);
        } else {
            const Result result = instead_ ? *instead_ : original_(arguments...);
            calls_.push_back({{arguments...}, result});
            return result;
        }
    }

    inline static std::vector<Call> calls_;
    inline static std::optional<Returned> instead_;
    inline static std::function<void()> onCall_;
    inline static Result (*original_)(Arguments...) = nullptr;

    ImportOverride override_;
};
