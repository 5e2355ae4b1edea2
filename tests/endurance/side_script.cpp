#include "tests/endurance/side_script.h"

#include <utility>

SideScript::SideScript(std::function<void()> script)
    : script_(std::move(script)),
      outside_(ConvertThreadToFiber(nullptr)),
      inside_(CreateFiber(0, run, this)) {}

SideScript::~SideScript() {
    DeleteFiber(inside_);
    ConvertFiberToThread();
}

void SideScript::resume() {
    if (!over_) {
        SwitchToFiber(inside_);
    }
}

void SideScript::pause() {
    SwitchToFiber(outside_);
}

void CALLBACK SideScript::run(void* self) {
    auto* const script = static_cast<SideScript*>(self);
    script->script_();
    script->over_ = true;
    // A fiber that returned would end the thread.
    script->pause();
}
