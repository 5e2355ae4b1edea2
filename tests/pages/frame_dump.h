#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <string>

/// Saves a page as "NN name.png", NN counting up, in the folder that the environment variable
/// KELVARO_FRAMES_FOLDER names; does nothing without that variable. For looking at what is measured.
void dumpFrame(Gdiplus::Bitmap& page, const std::string& name);
