#pragma once

#include <windows.h>

/// Shows the settings dialog (a resource of `instance`) without an owner and returns when it was closed.
/// "Save" writes the settings; that reading or writing failed is not shown. Main thread.
void showSettingsDialog(HINSTANCE instance);
