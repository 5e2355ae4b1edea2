#include "stats/core_temp_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::ElementsAre;

TEST(CoreTempNames, ConstructorHasOneName) {
    EXPECT_THAT(coreTempExportNames({"", CoreTempSignature::Constructor}),
                ElementsAre("??0CoreTempProxy@@QEAA@XZ"));
}

TEST(CoreTempNames, DestructorIsVirtualOrNot) {
    EXPECT_THAT(coreTempExportNames({"", CoreTempSignature::Destructor}),
                ElementsAre("??1CoreTempProxy@@UEAA@XZ", "??1CoreTempProxy@@QEAA@XZ"));
}

TEST(CoreTempNames, GetterIsConstOrNotAndVirtualOrNot) {
    EXPECT_THAT(coreTempExportNames({"GetVID", CoreTempSignature::Float}),
                ElementsAre("?GetVID@CoreTempProxy@@QEBAMXZ",
                            "?GetVID@CoreTempProxy@@QEAAMXZ",
                            "?GetVID@CoreTempProxy@@UEBAMXZ",
                            "?GetVID@CoreTempProxy@@UEAAMXZ"));
    EXPECT_THAT(coreTempExportNames({"GetData", CoreTempSignature::Bool}),
                ElementsAre("?GetData@CoreTempProxy@@QEBA_NXZ",
                            "?GetData@CoreTempProxy@@QEAA_NXZ",
                            "?GetData@CoreTempProxy@@UEBA_NXZ",
                            "?GetData@CoreTempProxy@@UEAA_NXZ"));
}

TEST(CoreTempNames, CountMayBeOfThreeIntegerTypes) {
    EXPECT_THAT(coreTempExportNames({"GetCPUCount", CoreTempSignature::Count}),
                ElementsAre("?GetCPUCount@CoreTempProxy@@QEBAIXZ",
                            "?GetCPUCount@CoreTempProxy@@QEAAIXZ",
                            "?GetCPUCount@CoreTempProxy@@UEBAIXZ",
                            "?GetCPUCount@CoreTempProxy@@UEAAIXZ",
                            "?GetCPUCount@CoreTempProxy@@QEBAKXZ",
                            "?GetCPUCount@CoreTempProxy@@QEAAKXZ",
                            "?GetCPUCount@CoreTempProxy@@UEBAKXZ",
                            "?GetCPUCount@CoreTempProxy@@UEAAKXZ",
                            "?GetCPUCount@CoreTempProxy@@QEBAHXZ",
                            "?GetCPUCount@CoreTempProxy@@QEAAHXZ",
                            "?GetCPUCount@CoreTempProxy@@UEBAHXZ",
                            "?GetCPUCount@CoreTempProxy@@UEAAHXZ"));
}

TEST(CoreTempNames, NameMayBeConstOrNot) {
    EXPECT_THAT(coreTempExportNames({"GetCPUName", CoreTempSignature::Text}),
                ElementsAre("?GetCPUName@CoreTempProxy@@QEBAPEBDXZ",
                            "?GetCPUName@CoreTempProxy@@QEAAPEBDXZ",
                            "?GetCPUName@CoreTempProxy@@UEBAPEBDXZ",
                            "?GetCPUName@CoreTempProxy@@UEAAPEBDXZ",
                            "?GetCPUName@CoreTempProxy@@QEBAPEADXZ",
                            "?GetCPUName@CoreTempProxy@@QEAAPEADXZ",
                            "?GetCPUName@CoreTempProxy@@UEBAPEADXZ",
                            "?GetCPUName@CoreTempProxy@@UEAAPEADXZ"));
}

TEST(CoreTempNames, IndexMayBeSignedOrNot) {
    EXPECT_THAT(coreTempExportNames({"GetTemp", CoreTempSignature::FloatAtIndex}),
                ElementsAre("?GetTemp@CoreTempProxy@@QEBAMH@Z",
                            "?GetTemp@CoreTempProxy@@QEAAMH@Z",
                            "?GetTemp@CoreTempProxy@@UEBAMH@Z",
                            "?GetTemp@CoreTempProxy@@UEAAMH@Z",
                            "?GetTemp@CoreTempProxy@@QEBAMI@Z",
                            "?GetTemp@CoreTempProxy@@QEAAMI@Z",
                            "?GetTemp@CoreTempProxy@@UEBAMI@Z",
                            "?GetTemp@CoreTempProxy@@UEAAMI@Z"));
}

}  // namespace
