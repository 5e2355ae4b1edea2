#include "framework/core/pass_pacing.h"

#include <gtest/gtest.h>

namespace {

using Panelix::PassTiming;
using Panelix::passWaitMs;

struct Case {
    const char* name;
    PassTiming timing;
    std::int64_t waitMs;
};

TEST(PassPacing, WaitsOutThePeriodFromTheStartOfThePass) {
    const Case cases[] = {
        {"a short pass waits for the rest", {1000, 1010, false, false, 66}, 56},
        {"a pass of no measurable length waits for all of it", {1000, 1000, false, false, 66}, 66},
        {"a pass of exactly one period does not wait", {1000, 1066, false, false, 66}, 0},
        {"a pass that overran does not wait", {1000, 1300, false, false, 66}, 0},
        {"a slide has 16 ms", {1000, 1005, false, true, 66}, 11},
        {"a slide pass that overran does not wait", {1000, 1017, false, true, 66}, 0},
        {"ten seconds in a dialog are followed by a full period", {1000, 11'000, true, false, 66}, 66},
        {"and during a slide by a full slide period", {1000, 11'000, true, true, 66}, 16},
        {"a period of 0 never waits", {1000, 1000, false, false, 0}, 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(passWaitMs(c.timing), c.waitMs) << c.name;
    }
}

}  // namespace
