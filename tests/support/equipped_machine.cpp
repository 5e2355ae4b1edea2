#include "tests/support/equipped_machine.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "framework/core/exported_function.h"
#include "framework/core/unique_resource.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/vendor_libraries.h"
#include "tests/support/only_wine.h"

namespace {

using Standins::VendorLibrary;

std::wstring driverPath() {
    wchar_t folder[MAX_PATH] = L"";
    GetSystemDirectoryW(folder, MAX_PATH);
    return std::wstring(folder) + L"\\nvapi64.dll";
}

void copyTo(const std::wstring& from, const std::wstring& to) {
    EXPECT_NE(CopyFileW(from.c_str(), to.c_str(), FALSE), FALSE) << "error " << GetLastError();
}

/// A prefix of the tests' own, or a machine of which somebody has said that it may be changed.
bool mayBeChanged() {
    return runsUnderWine() || GetEnvironmentVariableW(L"KELVARO_THROWAWAY_MACHINE", nullptr, 0) != 0;
}

/// Calls DllRegisterServer or DllUnregisterServer of the sound system's stand-in.
bool callAudioServer(const char* function) {
    const Panelix::UniqueModule server(
        LoadLibraryW(Standins::vendorLibraryPath(Standins::VendorLibrary::CoreAudio).c_str()));
    if (!server) {
        return false;
    }
    using Registration = HRESULT STDAPICALLTYPE();
    auto* const call = Panelix::exportedFunction<Registration>(server.get(), function);
    return call != nullptr && SUCCEEDED(call());
}

}  // namespace

EquippedMachine::EquippedMachine(const std::wstring& program) {
    if (!mayBeChanged()) {
        ADD_FAILURE() << "this would change the machine";
        return;
    }
    equipped_ = runsUnderWine() || !std::filesystem::exists(driverPath());
    if (!equipped_) {
        return;
    }
    copyTo(program, folder_.path() + L"\\Kelvaro.exe");
    copyTo(Standins::vendorLibraryPath(VendorLibrary::CoreTemp), folder_.path() + L"\\GetCoreTempInfo.dll");
    copyTo(Standins::vendorLibraryPath(VendorLibrary::Xinput), folder_.path() + L"\\XINPUT1_4.dll");
    copyTo(Standins::vendorLibraryPath(VendorLibrary::Nvapi), driverPath());
    EXPECT_TRUE(callAudioServer("DllRegisterServer"));
}

EquippedMachine::~EquippedMachine() {
    if (!equipped_) {
        return;
    }
    EXPECT_TRUE(callAudioServer("DllUnregisterServer"));
    EXPECT_NE(DeleteFileW(driverPath().c_str()), FALSE) << "error " << GetLastError();
}
