#pragma once

#include <windows.h>

namespace Standins {

/// While it lives, the Core Audio classes of this process are the stand-in's: nothing is written to the
/// registry, so that any number of tests can run side by side. COM must be running on the thread.
class LoadedCoreAudio {
public:
    /// Throws std::runtime_error when the library cannot be loaded or COM refuses its classes.
    /// Without the policy-configuration class, that class is what the system has, which is nothing under
    /// Wine.
    explicit LoadedCoreAudio(bool withPolicyConfig = true);
    ~LoadedCoreAudio();
    LoadedCoreAudio(const LoadedCoreAudio&) = delete;
    LoadedCoreAudio& operator=(const LoadedCoreAudio&) = delete;

private:
    DWORD enumeratorCookie_ = 0;
    DWORD policyConfigCookie_ = 0;
};

}  // namespace Standins
