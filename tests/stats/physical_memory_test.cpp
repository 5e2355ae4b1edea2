#include "stats/physical_memory.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace {

TEST(PhysicalMemory, FollowsTheMachine) {
    const std::int32_t percent = readPhysicalMemoryPercent();
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof(status);
    ASSERT_TRUE(GlobalMemoryStatusEx(&status));
    EXPECT_GT(percent, 0);
    EXPECT_LE(percent, 100);
    // The system's own figure, which rounds, and a machine that goes on meanwhile.
    EXPECT_NEAR(percent, static_cast<double>(status.dwMemoryLoad), 3.0);
}

}  // namespace
