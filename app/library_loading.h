#pragma once

/// Says where libraries are looked for that the system's and the vendors' own code loads by a mere file name:
/// in the system folder and in folders that such code adds itself; not in the current directory and not along
/// PATH, where anybody may have put one. For the process, before anything else.
void searchLibrariesInSystemFolder() noexcept;
