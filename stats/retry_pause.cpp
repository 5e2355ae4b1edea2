#include "stats/retry_pause.h"

#include <algorithm>

bool RetryPause::takeTurn(std::int64_t nowMs) {
    if (nowMs < dueMs_) {
        return false;
    }
    dueMs_ = nowMs + pauseMs_;
    pauseMs_ = std::min(2 * pauseMs_, longestMs_);
    return true;
}
