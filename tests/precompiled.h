#pragma once

// What most test files include, read by the compiler once for all of them. A test still includes what it
// uses.

#ifdef _WIN32
#include <windows.h>

#include <gdiplus.h>
#endif

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>
