#pragma once

#include <windows.h>

#include <functional>

#include "tests/endurance/random_source.h"

/// Answers the boxes and dialogs of this thread while they are open, by messages as a user's hand would cause
/// them: closes every message box, and works on the settings dialog until it is closed. It is called by a
/// timer of the thread's, whose messages only a modal loop takes out when the program has no loop of messages
/// of its own. One at a time.
class DialogVisitor {
public:
    explicit DialogVisitor(std::uint32_t seed);
    ~DialogVisitor();
    DialogVisitor(const DialogVisitor&) = delete;
    DialogVisitor& operator=(const DialogVisitor&) = delete;

    /// Called at each visit to an open window.
    std::function<void()> onVisit;

    /// Boxes and dialogs so far.
    unsigned boxes = 0;
    unsigned settingsDialogs = 0;

private:
    static void CALLBACK visitAll(HWND, UINT, UINT_PTR, DWORD);
    static BOOL CALLBACK visitWindow(HWND window, LPARAM);
    void visit(HWND window);
    void workOnSettings(HWND dialog);
    static void closeBox(HWND box, bool byItsButton);

    static DialogVisitor* current;

    RandomSource random_;
    HWND seen_ = nullptr;
    UINT_PTR timer_;
};
