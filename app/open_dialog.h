#pragma once

/// Brings a dialog or message box of the calling thread to the front that is open already: the visible one
/// with this caption. False, with nothing done, when there is none. A caption has at most 63 characters.
bool bringDialogToFront(const wchar_t* caption);
