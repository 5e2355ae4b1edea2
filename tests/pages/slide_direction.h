#pragma once

#include <cstdint>
#include <optional>

#include "framework/core/transition_kind.h"
#include "standins/lcd_sdk/virtual_g19.h"

/// The side from which a page of one colour slid in over one without that colour at its corners, as the
/// virtual keyboard's frames after the first `skip` ones show it. Nothing when no frame shows a slide, or
/// when frames disagree.
std::optional<Panelix::TransitionKind> slideDirection(const Standins::VirtualG19& keyboard,
                                                      std::uint32_t newPageArgb,
                                                      std::uint64_t skip = 0);
