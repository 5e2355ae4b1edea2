#pragma once

#include <windows.h>

#include <functional>

/// A function that runs in turns with the rest of its thread, each on a stack of its own: a test's plan
/// written from beginning to end, while the program's loop, which does not return, runs in between. The
/// thread that makes it is the only one that uses it.
class SideScript {
public:
    /// Nothing of `script` runs yet. It must not throw, and must be over before this object goes.
    explicit SideScript(std::function<void()> script);
    ~SideScript();
    SideScript(const SideScript&) = delete;
    SideScript& operator=(const SideScript&) = delete;

    /// Called outside: runs the script until its next pause, or to its end. Nothing when it is over.
    void resume();

    /// Called by the script: what called resume() goes on.
    void pause();

    bool isOver() const { return over_; }

private:
    static void CALLBACK run(void* self);

    std::function<void()> script_;
    void* outside_;
    void* inside_;
    bool over_ = false;
};
