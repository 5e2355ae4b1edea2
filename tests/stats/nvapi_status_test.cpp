#include "stats/nvapi_status.h"

#include <gtest/gtest.h>

namespace {

TEST(NvapiStatus, NamesAreTheEnumerators) {
    EXPECT_EQ(nvapiStatusName(0), L"NVAPI_OK");
    EXPECT_EQ(nvapiStatusName(-1), L"NVAPI_ERROR");
    EXPECT_EQ(nvapiStatusName(-2), L"NVAPI_LIBRARY_NOT_FOUND");
    EXPECT_EQ(nvapiStatusName(-3), L"NVAPI_NO_IMPLEMENTATION");
    EXPECT_EQ(nvapiStatusName(-6), L"NVAPI_NVIDIA_DEVICE_NOT_FOUND");
    EXPECT_EQ(nvapiStatusName(-104), L"NVAPI_NOT_SUPPORTED");
    EXPECT_EQ(nvapiStatusName(-130), L"NVAPI_OUT_OF_MEMORY");
    EXPECT_EQ(nvapiStatusName(-220), L"NVAPI_GPU_NOT_POWERED");
}

TEST(NvapiStatus, StatusWithoutNameShowsItsNumber) {
    EXPECT_EQ(nvapiStatusName(-217), L"NVAPI status -217");
    EXPECT_EQ(nvapiStatusName(7), L"NVAPI status 7");
}

}  // namespace
