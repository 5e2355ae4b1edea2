#include "standins/lcd_sdk/virtual_g19.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "standins/shared_record.h"
#include "standins/wait_until.h"

namespace {

using Standins::VirtualG19;

TEST(SharedRecord, EveryOpenerSeesTheSameBytes) {
    Standins::useOwnSession();
    const std::wstring name = Standins::sectionName(L"Test");
    const Standins::SharedRecord first(name, 42, 4096);
    const Standins::SharedRecord second(name, 42, 4096);
    static_cast<char*>(first.data())[100] = 'x';
    EXPECT_EQ(static_cast<char*>(second.data())[100], 'x');
    EXPECT_EQ(static_cast<char*>(second.data())[101], 0);
}

TEST(SharedRecord, RecordOfAnotherIdentityIsRefused) {
    Standins::useOwnSession();
    const std::wstring name = Standins::sectionName(L"Test");
    const Standins::SharedRecord first(name, 42, 4096);
    EXPECT_THROW(Standins::SharedRecord(name, 43, 4096), std::runtime_error);
}

TEST(SharedRecord, SmallerRecordOfTheSameNameIsRefused) {
    Standins::useOwnSession();
    const std::wstring name = Standins::sectionName(L"Test");
    const Standins::SharedRecord first(name, 42, 4096);
    EXPECT_THROW(Standins::SharedRecord(name, 42, 1'000'000), std::runtime_error);
}

TEST(SharedRecord, OwnSessionHasANameOfItsOwn) {
    SetEnvironmentVariableW(L"KELVARO_STANDIN_SESSION", nullptr);
    EXPECT_EQ(Standins::sectionName(L"Test"), L"Local\\KelvaroTest");
    Standins::useOwnSession();
    EXPECT_EQ(Standins::sectionName(L"Test"),
              L"Local\\KelvaroTest." + std::to_wstring(GetCurrentProcessId()));
}

TEST(VirtualG19, NewRecordIsEmpty) {
    Standins::useOwnSession();
    const VirtualG19 keyboard;
    EXPECT_EQ(keyboard.state(), Standins::KeyboardState::Waiting);
    EXPECT_EQ(keyboard.processId(), 0u);
    EXPECT_EQ(keyboard.initRecord().name, L"");
    EXPECT_EQ(keyboard.frameCount(), 0u);
    EXPECT_EQ(keyboard.passCount(), 0u);
    EXPECT_TRUE(keyboard.calls().empty());
    EXPECT_FALSE(keyboard.lastFrame().has_value());
    EXPECT_EQ(keyboard.buttonsDown(), 0u);
    EXPECT_TRUE(keyboard.scriptDone());
    EXPECT_FALSE(keyboard.refusesInit());
    EXPECT_TRUE(keyboard.isConnected());
}

TEST(VirtualG19, ChecksumSeesOrderAndEveryByte) {
    std::vector<std::uint8_t> bytes(Panelix::LcdSdk::kColorFrameBytes);
    const auto sum = [&] { return Standins::frameChecksum(bytes.data(), bytes.size()); };
    const std::uint64_t empty = sum();
    bytes[3] = 1;
    const std::uint64_t early = sum();
    EXPECT_NE(early, empty);
    std::swap(bytes[3], bytes[11]);
    EXPECT_NE(sum(), early);
    bytes[11] = 0;
    bytes.back() = 1;
    EXPECT_NE(sum(), empty);
}

// The reader gets whole frames, or none, while the writer runs through the log at full speed.
TEST(VirtualG19, FrameReadDuringWritingIsNeverTorn) {
    Standins::useOwnSession();
    VirtualG19 writer;
    const VirtualG19 reader;
    std::atomic<bool> stop = false;
    std::thread writing([&] {
        std::vector<std::uint8_t> pixels(Panelix::LcdSdk::kColorFrameBytes);
        for (std::uint8_t value = 0; !stop; ++value) {
            std::fill(pixels.begin(), pixels.end(), value);
            writer.setBackground(pixels.data());
            writer.endPass();
        }
    });

    int read = 0;
    int overtaken = 0;
    while (read < 300) {
        const std::uint64_t newest = reader.frameCount();
        // The oldest frame of the log is the one that the writer comes to next.
        const std::uint64_t oldest =
            newest < VirtualG19::kFrameLogLength ? 1 : newest - VirtualG19::kFrameLogLength;
        const auto frame = reader.frame(read % 2 == 0 ? newest : oldest + 1);
        const auto overtakenFrame = reader.frame(oldest);
        overtaken += overtakenFrame.has_value() ? 0 : 1;
        for (const auto& candidate : {frame, overtakenFrame}) {
            if (candidate.has_value()) {
                const auto& pixels = candidate->pixels;
                ASSERT_TRUE(
                    std::all_of(pixels.begin(), pixels.end(), [&](auto byte) { return byte == pixels[0]; }));
                ASSERT_EQ(candidate->checksum, Standins::frameChecksum(pixels.data(), pixels.size()));
            }
        }
        read += frame.has_value() ? 1 : 0;
    }
    stop = true;
    writing.join();
    EXPECT_GT(overtaken, 0) << "the writer never overtook the reader: nothing was tried";
}

TEST(WaitUntil, AnswersFalseWhenTheLimitPasses) {
    EXPECT_TRUE(Standins::waitUntil([] { return true; }, std::chrono::milliseconds(0)));
    EXPECT_FALSE(Standins::waitUntil([] { return false; }, std::chrono::milliseconds(10)));
    int asked = 0;
    EXPECT_TRUE(Standins::waitUntil([&] { return ++asked == 3; }, std::chrono::seconds(10)));
}

}  // namespace
