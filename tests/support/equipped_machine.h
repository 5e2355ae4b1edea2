#pragma once

#include <string>

#include "tests/support/temporary_folder.h"

/// A machine with all vendor libraries: a folder with a copy of the program and the libraries that lie beside
/// it, the NVIDIA driver in the system folder, and Core Audio's classes. The driver's place is empty in
/// the end. On Windows nothing is touched where there is a driver, and the test fails unless
/// KELVARO_THROWAWAY_MACHINE is set. Every program of the session sees it, so no other test runs meanwhile.
class EquippedMachine {
public:
    /// `program` is copied. Fails the test when something cannot be put in its place.
    explicit EquippedMachine(const std::wstring& program);
    ~EquippedMachine();
    EquippedMachine(const EquippedMachine&) = delete;
    EquippedMachine& operator=(const EquippedMachine&) = delete;

    /// False where the machine has a driver of its own.
    bool isEquipped() const { return equipped_; }

    /// The copy that runs with the libraries.
    std::wstring program() const { return folder_.path() + L"\\Kelvaro.exe"; }

private:
    TemporaryFolder folder_;
    bool equipped_ = false;
};
