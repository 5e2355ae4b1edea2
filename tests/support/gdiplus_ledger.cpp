#include "tests/support/gdiplus_ledger.h"

#include <windows.h>

#include <gdiplus.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <list>
#include <stdexcept>
#include <type_traits>

#include "tests/support/import_override.h"

namespace {

constexpr char kGdiplus[] = "gdiplus.dll";

struct Account {
    int taken = 0;
    int givenBack = 0;
};
using Side = int Account::*;

std::map<std::string, Account> accounts;
/// Failed calls by function; each watched function has its node from the start.
std::map<std::string, int> failedCalls;
GdiplusLedger::Numbers atTheEnd;

GdiplusLedger::Numbers outstandingNow() {
    GdiplusLedger::Numbers numbers;
    for (const auto& [kind, account] : accounts) {
        if (account.taken != account.givenBack) {
            numbers[kind] = account.taken - account.givenBack;
        }
    }
    return numbers;
}

// Whether a call did what it is for.
bool succeeded(Gdiplus::Status status) {
    return status == Gdiplus::Ok;
}
bool succeeded(int nonZero) {
    return nonZero != 0;
}
bool succeeded(const void* pointer) {
    return pointer != nullptr;
}

/// The name of a function, to tell those of one type apart.
template <std::size_t length>
struct Name {
    consteval Name(const char (&name)[length]) { std::copy_n(name, length, text.begin()); }

    std::array<char, length> text{};
};

/// Stands in for one function.
template <Name name, typename Function>
struct Entry;

template <Name name, typename Result, typename... Arguments>
struct Entry<name, Result(Arguments...)> {
    /// Of calls that went well; what is only watched has none.
    static inline int* counter = nullptr;
    static inline int* failures = nullptr;
    static inline Result (*original)(Arguments...) = nullptr;

    static Result call(Arguments... arguments) {
        if constexpr (std::is_void_v<Result>) {
            original(arguments...);
            ++*counter;
        } else {
            const Result result = original(arguments...);
            if (!succeeded(result)) {
                ++*failures;
            } else if (counter != nullptr) {
                ++*counter;
            }
            return result;
        }
    }
};

void (*endGdiplus)(ULONG_PTR) = nullptr;

void noteTheEnd(ULONG_PTR token) {
    atTheEnd = outstandingNow();
    endGdiplus(token);
}

}  // namespace

struct GdiplusLedger::Overrides {
    /// Counts the successful calls of a function, and the others.
    template <Name name, typename Function>
    void count(const char* kind, Side side, const char* module) {
        // A node of the map stays in place, and counting allocates nothing.
        watch<name, Function>(module, &(accounts[kind].*side));
    }

    template <Name name, typename Function>
    void watch(const char* module, int* counter = nullptr) {
        using Watched = Entry<name, Function>;
        if (add(module, name.text.data(), Watched::call)) {
            Watched::counter = counter;
            Watched::failures = &failedCalls[name.text.data()];
            Watched::original = list.back().template original<Function>();
        }
    }

    /// Not every program imports every function; what it does not import, it does not call.
    template <typename Function>
    bool add(const char* module, const char* name, Function* replacement) {
        try {
            list.emplace_back(module, name, replacement);
            return true;
        } catch (const std::invalid_argument&) {
            return false;
        }
    }

    // The last one made goes first.
    ~Overrides() {
        while (!list.empty()) {
            list.pop_back();
        }
    }

    std::list<ImportOverride> list;
};

// clang-format off
#define KELVARO_COUNT(kind, side, module, function) \
    overrides_->count<#function, decltype(function)>(kind, &Account::side, module)
#define KELVARO_WATCH(module, function) overrides_->watch<#function, decltype(function)>(module)
// clang-format on

GdiplusLedger::GdiplusLedger() : overrides_(std::make_unique<Overrides>()) {
    using namespace Gdiplus::DllExports;
    using Gdiplus::GdiplusStartup;
    accounts.clear();
    failedCalls.clear();
    atTheEnd.clear();
    KELVARO_COUNT("brush", taken, kGdiplus, GdipCreateSolidFill);
    KELVARO_COUNT("brush", givenBack, kGdiplus, GdipDeleteBrush);
    KELVARO_COUNT("pen", taken, kGdiplus, GdipCreatePen1);
    KELVARO_COUNT("pen", givenBack, kGdiplus, GdipDeletePen);
    KELVARO_COUNT("font family", taken, kGdiplus, GdipCreateFontFamilyFromName);
    KELVARO_COUNT("font family", givenBack, kGdiplus, GdipDeleteFontFamily);
    KELVARO_COUNT("font", taken, kGdiplus, GdipCreateFont);
    KELVARO_COUNT("font", givenBack, kGdiplus, GdipDeleteFont);
    KELVARO_COUNT("string format", taken, kGdiplus, GdipCreateStringFormat);
    KELVARO_COUNT("string format", givenBack, kGdiplus, GdipDeleteStringFormat);
    KELVARO_COUNT("graphics", taken, kGdiplus, GdipGetImageGraphicsContext);
    KELVARO_COUNT("graphics", taken, kGdiplus, GdipCreateFromHDC);
    KELVARO_COUNT("graphics", givenBack, kGdiplus, GdipDeleteGraphics);
    KELVARO_COUNT("image", taken, kGdiplus, GdipCreateBitmapFromScan0);
    KELVARO_COUNT("image", taken, kGdiplus, GdipCreateBitmapFromResource);
    KELVARO_COUNT("image", givenBack, kGdiplus, GdipDisposeImage);
    KELVARO_COUNT("locked bits", taken, kGdiplus, GdipBitmapLockBits);
    KELVARO_COUNT("locked bits", givenBack, kGdiplus, GdipBitmapUnlockBits);
    KELVARO_COUNT("heap block", taken, kGdiplus, GdipAlloc);
    KELVARO_COUNT("heap block", givenBack, kGdiplus, GdipFree);
    KELVARO_COUNT("GDI bitmap", taken, kGdiplus, GdipCreateHBITMAPFromBitmap);
    KELVARO_COUNT("GDI bitmap", givenBack, "gdi32.dll", DeleteObject);
    KELVARO_COUNT("device context", taken, "user32.dll", GetDC);
    KELVARO_COUNT("device context", givenBack, "gdi32.dll", DeleteDC);
    KELVARO_COUNT("device context", givenBack, "user32.dll", ReleaseDC);
    KELVARO_WATCH(kGdiplus, GdiplusStartup);
    KELVARO_WATCH(kGdiplus, GdipCloneBrush);
    KELVARO_WATCH(kGdiplus, GdipCloneImage);
    KELVARO_WATCH(kGdiplus, GdipDrawImageI);
    KELVARO_WATCH(kGdiplus, GdipDrawLineI);
    KELVARO_WATCH(kGdiplus, GdipDrawString);
    KELVARO_WATCH(kGdiplus, GdipFillPolygonI);
    KELVARO_WATCH(kGdiplus, GdipFillRectangleI);
    KELVARO_WATCH(kGdiplus, GdipGetImageEncoders);
    KELVARO_WATCH(kGdiplus, GdipGetImageEncodersSize);
    KELVARO_WATCH(kGdiplus, GdipSaveImageToFile);
    KELVARO_WATCH(kGdiplus, GdipSetCompositingMode);
    KELVARO_WATCH(kGdiplus, GdipSetCompositingQuality);
    KELVARO_WATCH(kGdiplus, GdipSetInterpolationMode);
    KELVARO_WATCH(kGdiplus, GdipSetPixelOffsetMode);
    KELVARO_WATCH(kGdiplus, GdipSetSmoothingMode);
    KELVARO_WATCH(kGdiplus, GdipSetStringFormatAlign);
    KELVARO_WATCH(kGdiplus, GdipSetStringFormatLineAlign);
    KELVARO_WATCH("gdi32.dll", GetDIBits);
    if (overrides_->add(kGdiplus, "GdiplusShutdown", noteTheEnd)) {
        endGdiplus = overrides_->list.back().original<decltype(noteTheEnd)>();
    }
}

#undef KELVARO_COUNT
#undef KELVARO_WATCH

GdiplusLedger::~GdiplusLedger() = default;

GdiplusLedger::Numbers GdiplusLedger::outstanding() const {
    return outstandingNow();
}

GdiplusLedger::Numbers GdiplusLedger::taken() const {
    Numbers numbers;
    for (const auto& [kind, account] : accounts) {
        if (account.taken != 0) {
            numbers[kind] = account.taken;
        }
    }
    return numbers;
}

GdiplusLedger::Numbers GdiplusLedger::outstandingAtTheEnd() const {
    return atTheEnd;
}

GdiplusLedger::Numbers GdiplusLedger::failures() const {
    Numbers numbers;
    for (const auto& [function, count] : failedCalls) {
        if (count != 0) {
            numbers[function] = count;
        }
    }
    return numbers;
}

std::vector<std::string> GdiplusLedger::unwatched() const {
    std::vector<std::string> functions;
    for (const std::string& function : importedFunctions(kGdiplus)) {
        // The end has no result.
        if (function != "GdiplusShutdown" && failedCalls.count(function) == 0) {
            functions.push_back(function);
        }
    }
    return functions;
}
