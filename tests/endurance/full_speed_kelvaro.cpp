#include "tests/endurance/full_speed_kelvaro.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "tests/support/registry_override.h"

namespace {

namespace LcdSdk = Panelix::LcdSdk;

/// More than the program needs to end.
constexpr unsigned kPassesToTheEnd = 200;

}  // namespace

FullSpeedKelvaro::FullSpeedKelvaro(GraphicsCard card) : machine_(clocks_, card) {
    for (const wchar_t* key : {L"Shell Folders", L"User Shell Folders"}) {
        RegistryOverride::setText(
            HKEY_CURRENT_USER,
            std::wstring(L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\") + key,
            L"Personal",
            documents_.path());
    }
}

void FullSpeedKelvaro::run(const std::function<void()>& plan) {
    SideScript script([this, &plan] {
        plan();
        exitApplet();
    });
    script_ = &script;
    clocks_.time.onSleep = [this] { endPass(); };
    {
        Kelvaro kelvaro(GetModuleHandleW(nullptr));
        kelvaro_ = &kelvaro;
        kelvaro.Run();
        kelvaro_ = nullptr;
    }
    clocks_.time.onSleep = nullptr;
    EXPECT_TRUE(script.isOver()) << "the program ended by itself after " << passes_ << " passes";
}

void FullSpeedKelvaro::endPass() {
    ++passes_;
    clocks_.time.sleptMs.clear();
    if (keyboard.passCount() != passes_) {
        ADD_FAILURE() << keyboard.passCount() << " frames were handed over in " << passes_ << " passes";
    }
    if (script_->isOver() && ++passesAfterTheEnd_ > kPassesToTheEnd) {
        // Its loop would never return to the test.
        std::printf("the program does not end\n");
        std::fflush(stdout);
        std::_Exit(1);
    }
    if (onPass) {
        onPass();
    }
    script_->resume();
}

void FullSpeedKelvaro::pass(unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        pass();
    }
}

void FullSpeedKelvaro::press(std::uint32_t buttons, unsigned passes) {
    keyboard.setHeldButtons(buttons);
    pass(passes);
    keyboard.setHeldButtons(0);
    pass();
}

void FullSpeedKelvaro::goHome() {
    press(LcdSdk::kButtonCancel);
    press(LcdSdk::kButtonCancel);
}

void FullSpeedKelvaro::exitApplet() {
    goHome();
    press(LcdSdk::kButtonMenu);
    press(LcdSdk::kButtonRight);
    press(LcdSdk::kButtonDown);
    press(LcdSdk::kButtonDown);
    keyboard.setHeldButtons(LcdSdk::kButtonOk);
}
