#pragma once

#include <windows.h>

namespace Standins {

/// Makes the stand-in's device enumerator. The caller owns the one reference.
HRESULT createEnumerator(REFIID iid, void** out) noexcept;

/// Makes the stand-in's policy-configuration object. The caller owns the one reference.
HRESULT createPolicyConfig(REFIID iid, void** out) noexcept;

}  // namespace Standins
