#pragma once

/// Says for the process how libraries are loaded, before anything else:
/// - Those that the system's and the vendors' own code loads by a mere file name are looked for in the system
///   folder and in folders that such code adds itself; not in the current directory and not along PATH, where
///   anybody may have put one.
/// - One that is damaged, or made for another processor, is not loaded, and Windows shows no box about it.
/// The
///   rest of the process's error mode stays.
void prepareLibraryLoading() noexcept;
