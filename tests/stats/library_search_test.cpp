#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "framework/core/com_apartment.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/core_temp/virtual_core_temp.h"
#include "standins/nvapi/virtual_nvidia.h"
#include "standins/vendor_libraries.h"
#include "stats/core_temp_library.h"
#include "stats/gpu_amd.h"
#include "stats/gpu_nvidia.h"
#include "stats/system_info.h"
#include "tests/stats/standin_session.h"

// Where the vendors' libraries are looked for. The tests put files into places that other programs see as
// well, so they run alone.

namespace {

using Standins::VendorLibrary;

std::filesystem::path systemFolder() {
    wchar_t path[MAX_PATH];
    EXPECT_GT(GetSystemDirectoryW(path, MAX_PATH), 0u);
    return path;
}

std::filesystem::path programFolder() {
    wchar_t path[MAX_PATH];
    EXPECT_GT(GetModuleFileNameW(nullptr, path, MAX_PATH), 0u);
    return std::filesystem::path(path).parent_path();
}

/// A copy of a stand-in, removed at the end. The library must not be in the process any more then.
class CopiedLibrary {
public:
    CopiedLibrary(const std::wstring& library, const std::filesystem::path& folder)
        : copy_(folder / std::filesystem::path(library).filename()) {
        // Never over a file that is there: it could be the machine's own driver.
        std::error_code error;
        std::filesystem::copy_file(library, copy_, error);
        EXPECT_FALSE(error) << copy_ << ": " << error.message();
        copied_ = !error;
    }
    ~CopiedLibrary() {
        if (copied_) {
            std::error_code error;
            std::filesystem::remove(copy_, error);
            EXPECT_FALSE(error) << error.message();
        }
    }
    CopiedLibrary(const CopiedLibrary&) = delete;
    CopiedLibrary& operator=(const CopiedLibrary&) = delete;

private:
    std::filesystem::path copy_;
    bool copied_ = false;
};

class CurrentFolder {
public:
    explicit CurrentFolder(const std::filesystem::path& folder) : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    ~CurrentFolder() { std::filesystem::current_path(before_); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    std::filesystem::path before_;
};

class LibrarySearch : public testing::Test {
    StandinSession session_;
};

TEST_F(LibrarySearch, NvapiIsTakenFromTheSystemFolder) {
    const CopiedLibrary copy(Standins::vendorLibraryPath(VendorLibrary::Nvapi), systemFolder());
    {
        GpuNvidia gpu;
        EXPECT_TRUE(gpu.initialise());
    }
    EXPECT_EQ(GetModuleHandleW(L"nvapi64.dll"), nullptr) << "the library goes with the source";
}

TEST_F(LibrarySearch, NvapiIsNotTakenFromBesideTheProgram) {
    const std::wstring library = Standins::vendorLibraryPath(VendorLibrary::Nvapi);
    const CopiedLibrary copy(library, programFolder());
    const CurrentFolder current(std::filesystem::path(library).parent_path());
    GpuNvidia gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"Failed to initialize Nvidia API: NVAPI_LIBRARY_NOT_FOUND");
}

TEST_F(LibrarySearch, AdlIsTakenFromTheLoadersPlaces) {
    const std::filesystem::path library(Standins::vendorLibraryPath(VendorLibrary::Adl));
    ASSERT_TRUE(SetDllDirectoryW(library.parent_path().c_str()));
    GpuAmd gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"ADL2: No AMD card found");
}

TEST_F(LibrarySearch, AdlStaysInTheProcess) {
    const std::filesystem::path library(Standins::vendorLibraryPath(VendorLibrary::Adl));
    ASSERT_TRUE(SetDllDirectoryW(library.parent_path().c_str()));
    {
        GpuAmd gpu;
        gpu.initialise();
    }
    EXPECT_NE(GetModuleHandleW(L"atiadlxx.dll"), nullptr);
}

TEST_F(LibrarySearch, CoreTempIsTakenFromBesideTheProgram) {
    const CopiedLibrary copy(Standins::vendorLibraryPath(VendorLibrary::CoreTemp), programFolder());
    EXPECT_NE(CoreTempLibrary::load(), nullptr);
    EXPECT_EQ(GetModuleHandleW(L"GetCoreTempInfo.dll"), nullptr) << "the library goes with its object";
}

TEST_F(LibrarySearch, CoreTempIsTakenFromTheSystemFolder) {
    const CopiedLibrary copy(Standins::vendorLibraryPath(VendorLibrary::CoreTemp), systemFolder());
    EXPECT_NE(CoreTempLibrary::load(), nullptr);
}

TEST_F(LibrarySearch, CoreTempIsNotTakenFromTheCurrentFolderOrThePath) {
    const std::filesystem::path folder =
        std::filesystem::path(Standins::vendorLibraryPath(VendorLibrary::CoreTemp)).parent_path();
    const CurrentFolder current(folder);
    ASSERT_TRUE(SetEnvironmentVariableW(L"PATH", folder.c_str()));
    EXPECT_EQ(CoreTempLibrary::load(), nullptr);
}

TEST_F(LibrarySearch, MissingCoreTempIsNoLibrary) {
    EXPECT_EQ(CoreTempLibrary::load(), nullptr);
}

TEST_F(LibrarySearch, LibraryThatComesLaterIsNotLookedForInEveryPass) {
    Standins::VirtualCoreTemp coreTemp;
    coreTemp.setRunning(true);
    Standins::VirtualNvidia nvidia;
    nvidia.setGpuCount(1);
    const Panelix::ComApartment com;
    const Standins::LoadedCoreAudio audio;
    SystemInfo info;
    const CopiedLibrary reader(Standins::vendorLibraryPath(VendorLibrary::CoreTemp), programFolder());
    const CopiedLibrary driver(Standins::vendorLibraryPath(VendorLibrary::Nvapi), systemFolder());
    info.update();
    info.update();
    EXPECT_FALSE(info.coreTempAvailable);
    EXPECT_FALSE(info.gpuStats.loadValid);
    EXPECT_EQ(GetModuleHandleW(L"GetCoreTempInfo.dll"), nullptr);
    EXPECT_EQ(GetModuleHandleW(L"nvapi64.dll"), nullptr);
    // They are where a new sampler finds them.
    SystemInfo later;
    later.update();
    EXPECT_TRUE(later.coreTempAvailable);
    EXPECT_TRUE(later.gpuStats.loadValid);
}

}  // namespace
