#pragma once

#include "standins/core_audio/virtual_audio.h"

namespace Standins {

/// The record that the server's objects work on, opened by the first call. Null when it cannot be opened;
/// once it was, it stays for as long as the process runs, since the server's threads use it to the end.
VirtualAudio* openServerRecord() noexcept;

/// The same, for those who exist only because it could be opened.
VirtualAudio& serverRecord() noexcept;

}  // namespace Standins
