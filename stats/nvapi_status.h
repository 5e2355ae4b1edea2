#pragma once

#include <string>

#include "stats/nvapi_abi.h"

/// NVAPI's own name of a status, e.g. "NVAPI_LIBRARY_NOT_FOUND"; "NVAPI status -217" for one that has no name
/// here. For when there is no driver to ask for its text.
std::wstring nvapiStatusName(Nvapi::Status status);
