#include <windows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

#include "tests/e2e/equipped_kelvaro.h"
#include "tests/hostile/garbage.h"
#include "tests/hostile/random_inputs.h"

namespace {

namespace LcdSdk = Panelix::LcdSdk;

class KelvaroWithGarbage : public EquippedKelvaro {
protected:
    Garbage garbage;
};

TEST_F(KelvaroWithGarbage, GoesOnAndEndsAsUsual) {
    // Not those that save screenshots or lead to Exit Applet.
    constexpr std::uint32_t kButtons = LcdSdk::kButtonLeft | LcdSdk::kButtonOk | LcdSdk::kButtonCancel |
                                       LcdSdk::kButtonUp | LcdSdk::kButtonMenu;
    RandomInputs inputs("states of all vendors' libraries, with the shipped program", 6, 600);
    garbage.choose(inputs);
    audio.clearFailures();
    start();
    ASSERT_TRUE(waitForPasses(1));
    while (inputs.next()) {
        const std::uint64_t passes = keyboard.passCount();
        const std::uint64_t frames = keyboard.frameCount();
        garbage.choose(inputs);
        keyboard.setHeldButtons(inputs.chance(5) ? kButtons : inputs.number() & kButtons);
        ASSERT_TRUE(waitForPasses(passes + 1)) << inputs.place();
        ASSERT_TRUE(
            Standins::waitUntil([&] { return keyboard.frameCount() > frames; }, std::chrono::seconds(20)))
            << inputs.place();
        ASSERT_TRUE(kelvaro->isRunning()) << inputs.place();
    }
    if (std::getenv("KELVARO_ALL") == nullptr) {
        return;
    }
    keyboard.setHeldButtons(0);
    audio.clearFailures();
    ASSERT_NO_FATAL_FAILURE(press(LcdSdk::kButtonCancel));
    ASSERT_NO_FATAL_FAILURE(exitByButtons());
    EXPECT_EQ(kelvaro->waitForExit(), DWORD{0});
}

}  // namespace
