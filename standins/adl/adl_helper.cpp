#include "standins/adl/adl_helper.h"

extern "C" __declspec(dllexport) void adlHelper() noexcept {}
