#include "framework/drawing/rate_updater.h"

#include <chrono>

namespace Panelix {

RateUpdater::RateUpdater(std::int64_t periodMs) : periodMs_(periodMs) {}

void RateUpdater::tick() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    tickAt(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
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
