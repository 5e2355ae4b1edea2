#pragma once

#include <windows.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <set>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

enum class MessageBoxIcon { None, Error, Question, Warning, Information, Other };

/// What a message box showed.
struct SeenMessageBox {
    /// Valid while the box is open only.
    HWND window;
    DWORD threadId;
    /// Null when the box has no owner.
    HWND owner;
    std::wstring caption;
    std::wstring text;
    MessageBoxIcon icon;
    /// Ids of the buttons (IDOK, IDCANCEL, ...) from first to last.
    std::vector<int> buttons;
    LONG_PTR style;
    LONG_PTR extendedStyle;
};

/// For as long as it lives, finds every message box that this process opens, notes what it shows and presses
/// one of its buttons, from a thread of its own. Other dialogs (those with more than texts, an icon and
/// standard buttons) are left alone.
class MessageBoxWatcher {
public:
    using Visitor = std::function<void(const SeenMessageBox&)>;

    /// Presses `button`, or the first one of a box that has no such button. `whileOpen` is called on the
    /// watcher's thread for each box before its button is pressed.
    explicit MessageBoxWatcher(int button = IDOK, Visitor whileOpen = {});

    /// Stops watching; a box opened later stays open.
    ~MessageBoxWatcher();
    MessageBoxWatcher(const MessageBoxWatcher&) = delete;
    MessageBoxWatcher& operator=(const MessageBoxWatcher&) = delete;

    /// Waits until at least `count` boxes have been seen since the start; false when the time is over first.
    bool waitForCount(std::size_t count,
                      std::chrono::milliseconds timeout = std::chrono::milliseconds(10'000)) const;

    /// All boxes seen so far, oldest first.
    std::vector<SeenMessageBox> boxes() const;

private:
    void watch(std::stop_token stop);
    void lookOnce();
    void answer(const SeenMessageBox& box) const;

    int button_;
    Visitor whileOpen_;
    /// Boxes already answered that are still on the screen. Watcher's thread only.
    std::set<HWND> answered_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<SeenMessageBox> boxes_;
    /// Declared last: the thread uses everything above.
    std::jthread thread_;
};
