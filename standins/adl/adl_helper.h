#pragma once

/// Does nothing: whoever imports it cannot be loaded without the library that exports it.
extern "C" void adlHelper() noexcept;
