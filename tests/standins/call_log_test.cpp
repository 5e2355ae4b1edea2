#include "standins/call_log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace {

using Standins::CallLog;
using Standins::LoggedCall;

constexpr std::uint32_t kWriters = 3;
constexpr std::int64_t kCallsPerWriter = 20'000;

TEST(CallLog, EntriesAreWholeWhoeverWritesMeanwhile) {
    const auto log = std::make_unique<CallLog>();
    std::atomic<std::uint32_t> running{kWriters};
    std::atomic<std::uint64_t> read{0};
    std::vector<std::thread> writers;
    for (std::uint32_t writer = 0; writer < kWriters; ++writer) {
        writers.emplace_back([&, writer] {
            for (std::int64_t i = 0; i < kCallsPerWriter; ++i) {
                log->add(writer, {i, i, i, i, writer});
                // On a busy machine all could be written before anything is read.
                while (i == kCallsPerWriter / 2 && read == 0) {
                    std::this_thread::yield();
                }
            }
            --running;
        });
    }
    while (running > 0) {
        for (const LoggedCall& call : log->entries()) {
            ++read;
            for (std::size_t k = 1; k < 4; ++k) {
                ASSERT_EQ(call.arguments[k], call.arguments[0]) << "parts of two calls";
            }
            ASSERT_EQ(call.arguments[4], call.call);
        }
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    // A writer that was held up for a whole round of the log may have written over a newer entry.
    EXPECT_GE(log->entries().size(), CallLog::kLength - kWriters);
    EXPECT_LE(log->entries().size(), CallLog::kLength);
    for (std::uint32_t writer = 0; writer < kWriters; ++writer) {
        EXPECT_EQ(log->count(writer), static_cast<std::uint64_t>(kCallsPerWriter));
    }
}

TEST(CallLog, IsEmptyOnceItWasCleared) {
    const auto log = std::make_unique<CallLog>();
    log->add(1, {7});
    log->clear();
    EXPECT_EQ(log->count(1), 0U);
    EXPECT_TRUE(log->entries().empty());
    log->add(2, {8});
    const std::vector<LoggedCall> calls = log->entries();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].call, 2U);
    EXPECT_EQ(calls[0].arguments[0], 8);
}

TEST(CallLog, ACallTakesAsLongAsItsKindWasToldTo) {
    const auto log = std::make_unique<CallLog>();
    constexpr std::chrono::milliseconds kDuration{60};
    const auto timeOf = [&log](std::uint32_t call) {
        const auto start = std::chrono::steady_clock::now();
        log->add(call);
        return std::chrono::steady_clock::now() - start;
    };
    log->setDuration(3, static_cast<std::uint32_t>(kDuration.count()));
    EXPECT_GE(timeOf(3), kDuration);
    EXPECT_LT(timeOf(4), kDuration);
    log->setDuration(3, 0);
    EXPECT_LT(timeOf(3), kDuration);
}

}  // namespace
