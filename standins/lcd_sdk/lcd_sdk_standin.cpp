// The stand-in for the keyboard vendor's LCD library: every export records its call in the virtual keyboard's
// record and answers what the record says. The .def files, one per variant of the library, name the exports.

#include "standins/lcd_sdk/virtual_g19.h"

#include <exception>
#include <memory>
#include <type_traits>

#include "framework/core/lcd_sdk_abi.h"

namespace {

using Standins::LcdCall;
using Standins::VirtualG19;

// Null when the record cannot be opened: the library then behaves like one without a keyboard. Opened by the
// first call and not while the library is loaded, when the loader's lock is held.
VirtualG19* keyboard() noexcept {
    static const std::unique_ptr<VirtualG19> instance = []() noexcept -> std::unique_ptr<VirtualG19> {
        try {
            return std::make_unique<VirtualG19>();
        } catch (const std::exception&) {
            return nullptr;
        }
    }();
    return instance.get();
}

// Records the call. True while a program is using the keyboard, between LogiLcdInit and LogiLcdShutdown.
bool enter(LcdCall call, int argument = 0) noexcept {
    if (keyboard() == nullptr) {
        return false;
    }
    keyboard()->recordCall(call, static_cast<std::uint32_t>(argument));
    return keyboard()->state() == Standins::KeyboardState::Running;
}

}  // namespace

extern "C" {

bool LogiLcdInit(const wchar_t* friendlyName, int lcdType) noexcept {
    enter(LcdCall::Init, lcdType);
    if (keyboard() == nullptr) {
        return false;
    }
    const bool accepted = !keyboard()->refusesInit();
    keyboard()->recordInit(friendlyName, lcdType, accepted);
    return accepted;
}

bool LogiLcdIsConnected(int lcdType) noexcept {
    return enter(LcdCall::IsConnected, lcdType) && lcdType == Panelix::LcdSdk::kTypeColor &&
           keyboard()->isConnected();
}

bool LogiLcdIsButtonPressed(int button) noexcept {
    return enter(LcdCall::IsButtonPressed, button) &&
           (keyboard()->buttonsDown() & static_cast<std::uint32_t>(button)) != 0;
}

void LogiLcdUpdate() noexcept {
    if (enter(LcdCall::Update)) {
        keyboard()->endPass();
    }
}

void LogiLcdShutdown() noexcept {
    if (enter(LcdCall::Shutdown)) {
        keyboard()->recordShutdown();
    }
}

// The keyboard has no monochrome LCD.
bool LogiLcdMonoSetBackground(std::uint8_t* /*bitmap*/) noexcept {
    enter(LcdCall::MonoSetBackground);
    return false;
}

bool LogiLcdMonoSetText(int line, wchar_t* /*text*/) noexcept {
    enter(LcdCall::MonoSetText, line);
    return false;
}

bool LogiLcdColorSetBackground(std::uint8_t* bitmap) noexcept {
    if (!enter(LcdCall::ColorSetBackground) || bitmap == nullptr) {
        return false;
    }
    keyboard()->setBackground(bitmap);
    return true;
}

// Titles and lines of text are recorded as calls and not drawn.
bool LogiLcdColorSetTitle(wchar_t* /*text*/, int /*red*/, int /*green*/, int /*blue*/) noexcept {
    return enter(LcdCall::ColorSetTitle);
}

bool LogiLcdColorSetText(int line, wchar_t* /*text*/, int /*red*/, int /*green*/, int /*blue*/) noexcept {
    return enter(LcdCall::ColorSetText, line);
}

}  // extern "C"

namespace {

template <typename Declared, typename Function>
constexpr bool kMatches = std::is_convertible_v<Function, Declared*>;

static_assert(kMatches<Panelix::LcdSdk::LogiLcdInit, decltype(&LogiLcdInit)>);
static_assert(kMatches<Panelix::LcdSdk::LogiLcdIsConnected, decltype(&LogiLcdIsConnected)>);
static_assert(kMatches<Panelix::LcdSdk::LogiLcdIsButtonPressed, decltype(&LogiLcdIsButtonPressed)>);
static_assert(kMatches<Panelix::LcdSdk::LogiLcdUpdate, decltype(&LogiLcdUpdate)>);
static_assert(kMatches<Panelix::LcdSdk::LogiLcdShutdown, decltype(&LogiLcdShutdown)>);
static_assert(kMatches<Panelix::LcdSdk::LogiLcdMonoSetBackground, decltype(&LogiLcdMonoSetBackground)>);
static_assert(kMatches<Panelix::LcdSdk::LogiLcdMonoSetText, decltype(&LogiLcdMonoSetText)>);
static_assert(kMatches<Panelix::LcdSdk::LogiLcdColorSetBackground, decltype(&LogiLcdColorSetBackground)>);
static_assert(kMatches<Panelix::LcdSdk::LogiLcdColorSetTitle, decltype(&LogiLcdColorSetTitle)>);
static_assert(kMatches<Panelix::LcdSdk::LogiLcdColorSetText, decltype(&LogiLcdColorSetText)>);

}  // namespace
