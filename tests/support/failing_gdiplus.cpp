#include "tests/support/failing_gdiplus.h"

#include <windows.h>

#include <gdiplus.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <list>
#include <map>
#include <stdexcept>

#include "tests/support/import_override.h"

namespace {

/// Calls that may still come before the one that fails; that one finds 1. 0 and less: no call fails.
int callsToFailure = 0;
bool failed = false;
/// Of which function, null for any.
const int* failingFunction = nullptr;

/// Counts a call, and tells whether it is the one that fails.
bool isFailing(int& calls) {
    ++calls;
    if (callsToFailure == 0 || (failingFunction != nullptr && failingFunction != &calls)) {
        return false;
    }
    failed = --callsToFailure == 0;
    return failed;
}

/// The name of a function, to tell those of one type apart.
template <std::size_t length>
struct Name {
    consteval Name(const char (&name)[length]) { std::copy_n(name, length, text.begin()); }

    std::array<char, length> text{};
};

template <Name name, typename Function>
struct Entry;

template <Name name, typename... Arguments>
struct Entry<name, Gdiplus::GpStatus(Arguments...)> {
    static inline int calls = 0;
    static inline Gdiplus::GpStatus (*original)(Arguments...) = nullptr;

    static Gdiplus::GpStatus call(Arguments... arguments) {
        return isFailing(calls) ? Gdiplus::OutOfMemory : original(arguments...);
    }

    static Gdiplus::GpStatus callAndFail(Arguments... arguments) {
        const Gdiplus::GpStatus status = original(arguments...);
        return isFailing(calls) ? Gdiplus::OutOfMemory : status;
    }
};

}  // namespace

struct FailingGdiplus::Overrides {
    template <Name name, typename Function>
    void add(Function* replacement) {
        using Watched = Entry<name, Function>;
        try {
            list.emplace_back("gdiplus.dll", name.text.data(), replacement);
        } catch (const std::invalid_argument&) {
            // What this program does not import, it does not call.
            return;
        }
        Watched::original = list.back().template original<Function>();
        calls[name.text.data()] = &Watched::calls;
    }

    // The last one made goes first.
    ~Overrides() {
        while (!list.empty()) {
            list.pop_back();
        }
    }

    std::list<ImportOverride> list;
    std::map<std::string, int*> calls;
};

// clang-format off
#define KELVARO_WATCH(function) \
    overrides_->add<#function, decltype(function)>(Entry<#function, decltype(function)>::call)
// clang-format on

FailingGdiplus::FailingGdiplus() : overrides_(std::make_unique<Overrides>()) {
    using namespace Gdiplus::DllExports;
    KELVARO_WATCH(GdipCreateBitmapFromScan0);
    KELVARO_WATCH(GdipGetImageGraphicsContext);
    KELVARO_WATCH(GdipCreateStringFormat);
    KELVARO_WATCH(GdipBitmapLockBits);
    KELVARO_WATCH(GdipDrawImageI);
    KELVARO_WATCH(GdipDrawLineI);
    KELVARO_WATCH(GdipDrawString);
    KELVARO_WATCH(GdipFillPolygonI);
    KELVARO_WATCH(GdipFillRectangleI);
    using Unlock = Entry<"GdipBitmapUnlockBits", decltype(GdipBitmapUnlockBits)>;
    overrides_->add<"GdipBitmapUnlockBits", decltype(GdipBitmapUnlockBits)>(Unlock::callAndFail);
    failCall(0);
}

#undef KELVARO_WATCH

FailingGdiplus::~FailingGdiplus() {
    failCall(0);
}

void FailingGdiplus::failCall(int number) {
    for (const auto& [name, calls] : overrides_->calls) {
        *calls = 0;
    }
    callsToFailure = number;
    failed = false;
    failingFunction = nullptr;
}

void FailingGdiplus::failCall(int number, const std::string& function) {
    failCall(number);
    failingFunction = overrides_->calls.at(function);
}

bool FailingGdiplus::hasFailed() const {
    return failed;
}

int FailingGdiplus::calls(const std::string& function) const {
    return *overrides_->calls.at(function);
}
