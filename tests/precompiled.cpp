// CMake makes precompiled headers for a target that has a source.
