#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "framework/core/lcd_sdk_abi.h"
#include "tests/endurance/full_speed_kelvaro.h"
#include "tests/pages/failing_allocations.h"

namespace {

namespace LcdSdk = Panelix::LcdSdk;

/// In a pass that samples, paints, composes and converts: longer texts, two entries of the histories, a
/// frame.
constexpr std::size_t kMostInAPass = 13;

/// Blocks that the program takes from the C++ heap, pass by pass. GDI+ has a heap of its own.
class PassAllocations : public FullSpeedKelvaro {
protected:
    PassAllocations() : FullSpeedKelvaro(GraphicsCard::Nvidia) {
        onPass = [this] {
            allocated_ = allocationsSoFar() - before_;
            // What the test itself allocates does not count.
            before_ = allocationsSoFar();
        };
    }

    /// A pass of the program. Its blocks are in `allocated_`.
    void countedPass() {
        before_ = allocationsSoFar();
        pass();
    }

    /// The allocations of passes in which nothing changed: no sample was taken and the LCD shows the same.
    std::vector<std::size_t> unchangedPasses(unsigned passes) {
        std::vector<std::size_t> allocations;
        for (unsigned i = 0; i < passes; ++i) {
            const std::uint64_t frame = frameChecksum();
            const std::uint64_t samples = machine_.gamepads().callCount(Standins::XinputCall::GetState);
            countedPass();
            if (frameChecksum() == frame &&
                machine_.gamepads().callCount(Standins::XinputCall::GetState) == samples) {
                allocations.push_back(allocated_);
            }
        }
        return allocations;
    }

    static std::size_t sum(const std::vector<std::size_t>& numbers) {
        std::size_t total = 0;
        for (const std::size_t number : numbers) {
            total += number;
        }
        return total;
    }

    std::size_t before_ = 0;
    std::size_t allocated_ = 0;
};

TEST_F(PassAllocations, AnUnchangedPassOfTheMainPageAllocatesNothing) {
    run([this] {
        pass(30);
        const std::vector<std::size_t> allocations = unchangedPasses(60);
        EXPECT_GT(allocations.size(), 20U) << "hardly a pass was unchanged";
        EXPECT_EQ(sum(allocations), 0U) << "in " << allocations.size() << " passes";
    });
}

TEST_F(PassAllocations, AnUnchangedPassOfAListOrOfThePictureAllocatesNothing) {
    run([this] {
        for (const int button :
             {LcdSdk::kButtonMenu, LcdSdk::kButtonRight, LcdSdk::kButtonMenu, LcdSdk::kButtonOk}) {
            press(static_cast<std::uint32_t>(button));
            pass(20);
            const std::vector<std::size_t> allocations = unchangedPasses(20);
            EXPECT_GT(allocations.size(), 10U) << "button " << button;
            EXPECT_EQ(sum(allocations), 0U) << "button " << button;
        }
    });
}

TEST_F(PassAllocations, APassThatPaintsAllocatesNoMoreThanEver) {
    run([this] {
        pass(30);
        std::size_t most = 0;
        for (unsigned i = 0; i < 60; ++i) {
            countedPass();
            most = std::max(most, allocated_);
        }
        std::printf("at most %zu allocations in a pass of the main page\n", most);
        EXPECT_GT(most, 0U) << "nothing was counted";
        EXPECT_LE(most, kMostInAPass);
    });
}

}  // namespace
