#pragma once

#include <string>

#include "tests/support/temporary_folder.h"

/// A machine with all vendor libraries: a folder with a copy of the program and the libraries that lie beside
/// it, the NVIDIA driver in the system folder, and Core Audio's classes. Only under Wine, in whose prefix the
/// driver's place is overwritten and empty in the end; elsewhere the test fails and nothing is touched. Every
/// program of the prefix sees it, so no other test runs meanwhile.
class EquippedMachine {
public:
    /// `program` is copied. Fails the test when something cannot be put in its place.
    explicit EquippedMachine(const std::wstring& program);
    ~EquippedMachine();
    EquippedMachine(const EquippedMachine&) = delete;
    EquippedMachine& operator=(const EquippedMachine&) = delete;

    /// The copy that runs with the libraries.
    std::wstring program() const { return folder_.path() + L"\\Kelvaro.exe"; }

private:
    TemporaryFolder folder_;
    bool equipped_ = false;
};
