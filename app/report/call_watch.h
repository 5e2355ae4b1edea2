#pragma once

#include <windows.h>

#include <atomic>
#include <functional>

#include "framework/core/unique_resource.h"

/// Watches the report from a thread of its own: a driver's call that does not return would hold it up without
/// a word. Each line of the report is progress. Time in which a line is written does not count, since a
/// console stands still while its user marks text, nor does standby.
class CallWatch {
public:
    /// So long a call may take. A graphics card that sleeps needs some seconds.
    static constexpr int kSeconds = 15;

    /// `heldUp` is called once, on the watch's own thread, when there was no line for so long. The watch
    /// begins with the first line.
    explicit CallWatch(std::function<void()> heldUp);
    ~CallWatch();
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;

    /// Before and after each line, on the report's thread.
    void beginLine() { waiting_ = false; }
    void endLine() {
        seconds_ = 0;
        waiting_ = true;
    }

private:
    static DWORD WINAPI watch(LPVOID self) noexcept;

    std::function<void()> heldUp_;
    std::atomic<bool> waiting_ = false;
    std::atomic<int> seconds_ = 0;
    Panelix::UniqueHandle ending_;
    Panelix::UniqueHandle thread_;
};
