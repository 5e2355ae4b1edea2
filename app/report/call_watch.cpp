#include "app/report/call_watch.h"

#include <utility>

namespace {

constexpr DWORD kSecondMs = 1'000;

}  // namespace

// Without the event or the thread there is no watch; the report does not need it.
CallWatch::CallWatch(std::function<void()> heldUp)
    : heldUp_(std::move(heldUp)),
      ending_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      thread_(ending_ ? CreateThread(nullptr, 0, watch, this, 0, nullptr) : nullptr) {}

CallWatch::~CallWatch() {
    if (thread_) {
        SetEvent(ending_.get());
        WaitForSingleObject(thread_.get(), INFINITE);
    }
}

DWORD WINAPI CallWatch::watch(LPVOID self) noexcept {
    auto& own = *static_cast<CallWatch*>(self);
    while (WaitForSingleObject(own.ending_.get(), kSecondMs) == WAIT_TIMEOUT) {
        if (own.waiting_ && ++own.seconds_ > kSeconds) {
            own.heldUp_();
            break;
        }
    }
    return 0;
}
