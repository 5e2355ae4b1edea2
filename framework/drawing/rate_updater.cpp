#include "framework/drawing/rate_updater.h"

#include "framework/core/awake_time.h"

namespace Panelix {

RateUpdater::RateUpdater(std::int64_t periodMs) : periodMs_(periodMs) {}

void RateUpdater::tick() {
    tickAt(awakeMs());
}

void RateUpdater::tickAt(std::int64_t nowMs) {
    if (lastUpdateMs_ == kNever) {
        lastUpdateMs_ = nowMs;
    } else if (nowMs - lastUpdateMs_ < periodMs_) {
        return;
    } else {
        lastUpdateMs_ += periodMs_;
    }
    update();
}

}  // namespace Panelix
