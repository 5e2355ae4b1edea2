#pragma once

#include <windows.h>

/// Shows the settings dialog (a resource of `instance`) without an owner and returns when it was closed.
/// "Save" writes the settings; that reading or writing failed is not shown. When the dialog is open already,
/// which a message loop inside it may bring about, it comes to the front and this returns at once. Main
/// thread.
void showSettingsDialog(HINSTANCE instance);
