#include "framework/core/tray_record.h"

#include <gtest/gtest.h>

namespace {

TEST(TrayRecord, IsWholeFromShellVersionFiveOnAndCutBeforeIt) {
    struct Case {
        std::uint32_t major;
        std::uint32_t minor;
        std::uint32_t bytes;
    };
    for (const Case& c : {Case{0, 0, 952},
                          Case{4, 0, 952},
                          Case{4, 72, 952},
                          Case{4, 65535, 952},
                          Case{5, 0, 976},
                          Case{5, 81, 976},
                          Case{6, 0, 976},
                          Case{10, 0, 976}}) {
        EXPECT_EQ(Panelix::trayRecordBytes(Panelix::packVersion(c.major, c.minor)), c.bytes)
            << c.major << '.' << c.minor;
    }
}

TEST(TrayRecord, AnUnknownShellGetsTheCutRecord) {
    EXPECT_EQ(Panelix::trayRecordBytes(0), 952U);
}

TEST(TrayRecord, AVersionIsPackedIntoTheUpperHalf) {
    EXPECT_EQ(Panelix::packVersion(6, 1), 0x0006'0001'0000'0000U);
}

}  // namespace
