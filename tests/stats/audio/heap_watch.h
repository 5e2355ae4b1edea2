#pragma once

#include <cstddef>

/// Blocks that operator new has given out in this program and that are not deleted yet.
std::ptrdiff_t heapBlocksInUse() noexcept;
