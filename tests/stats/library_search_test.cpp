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
#include "tests/support/only_wine.h"
#include "tests/support/standin_session.h"

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

std::filesystem::path folderOfModule(const wchar_t* name) {
    wchar_t path[MAX_PATH] = L"";
    EXPECT_GT(GetModuleFileNameW(GetModuleHandleW(name), path, MAX_PATH), 0u);
    return std::filesystem::path(path).parent_path();
}

/// A copy of a library, which leaves the process and is removed at the end.
class CopiedLibrary {
public:
    CopiedLibrary(const std::filesystem::path& library, const std::filesystem::path& folder)
        : copy_(folder / library.filename()) {
        // Never over a file that is there: it could be the machine's own driver.
        std::error_code error;
        std::filesystem::copy_file(library, copy_, error);
        EXPECT_FALSE(error) << copy_ << ": " << error.message();
        copied_ = !error;
    }
    ~CopiedLibrary() {
        if (copied_) {
            while (const HMODULE module = GetModuleHandleW(copy_.filename().c_str())) {
                FreeLibrary(module);
            }
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

/// A folder that is the current one, stands in the PATH, and is where the program's own loads search.
class OfferedFolder {
public:
    explicit OfferedFolder(const std::filesystem::path& folder) : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
        EXPECT_TRUE(SetEnvironmentVariableW(L"PATH", folder.c_str()));
        EXPECT_TRUE(SetDllDirectoryW(folder.c_str()));
    }
    ~OfferedFolder() { std::filesystem::current_path(before_); }
    OfferedFolder(const OfferedFolder&) = delete;
    OfferedFolder& operator=(const OfferedFolder&) = delete;

private:
    std::filesystem::path before_;
};

class LibrarySearch : public testing::Test {
protected:
    void SetUp() override {
        for (const wchar_t* library : {L"nvapi64.dll", L"atiadlxx.dll", L"GetCoreTempInfo.dll"}) {
            SKIP_ON_WINDOWS_UNLESS(!exists(systemFolder() / library),
                                   "the machine has such a library of its own");
        }
    }

private:
    StandinSession session_;
};

TEST_F(LibrarySearch, NvapiIsTakenFromTheSystemFolder) {
    const CopiedLibrary copy(Standins::vendorLibraryPath(VendorLibrary::Nvapi), systemFolder());
    GpuNvidia gpu;
    EXPECT_TRUE(gpu.initialise());
}

TEST_F(LibrarySearch, NvapiIsNotTakenFromElsewhere) {
    const std::wstring library = Standins::vendorLibraryPath(VendorLibrary::Nvapi);
    const CopiedLibrary copy(library, programFolder());
    const OfferedFolder offered(std::filesystem::path(library).parent_path());
    GpuNvidia gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"Failed to initialize Nvidia API: NVAPI_LIBRARY_NOT_FOUND");
    EXPECT_EQ(GetModuleHandleW(L"nvapi64.dll"), nullptr);
}

TEST_F(LibrarySearch, NvapiThatWasStartedStaysInTheProcess) {
    const CopiedLibrary copy(Standins::vendorLibraryPath(VendorLibrary::Nvapi), systemFolder());
    Standins::VirtualNvidia driver;
    for (const std::int32_t status : {0, -6}) {
        driver.setStatus(Standins::NvapiCall::Initialize, status);
        {
            GpuNvidia gpu;
            EXPECT_EQ(gpu.initialise(), status == 0);
        }
        ASSERT_NE(GetModuleHandleW(L"nvapi64.dll"), nullptr) << status;
        FreeLibrary(GetModuleHandleW(L"nvapi64.dll"));
        EXPECT_EQ(GetModuleHandleW(L"nvapi64.dll"), nullptr) << "the source has loaded it once";
    }
}

TEST_F(LibrarySearch, NvapiThatCannotBeStartedGoes) {
    const CopiedLibrary copy(Standins::vendorLibraryPath(VendorLibrary::Nvapi), systemFolder());
    Standins::VirtualNvidia driver;
    driver.setMissing(Standins::NvapiCall::Initialize, true);
    GpuNvidia gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"Failed to initialize Nvidia API: NVAPI_NO_IMPLEMENTATION");
    EXPECT_EQ(GetModuleHandleW(L"nvapi64.dll"), nullptr);
}

TEST_F(LibrarySearch, AdlIsTakenFromTheSystemFolderOrFromBesideTheProgram) {
    for (const std::filesystem::path& folder : {systemFolder(), programFolder()}) {
        const CopiedLibrary copy(Standins::vendorLibraryPath(VendorLibrary::Adl), folder);
        GpuAmd gpu;
        EXPECT_FALSE(gpu.initialise());
        EXPECT_EQ(gpu.lastError(), L"ADL2: No AMD card found") << folder;
        EXPECT_EQ(folderOfModule(L"atiadlxx.dll"), folder);
    }
}

TEST_F(LibrarySearch, AdlBringsWhatItNeedsOfItsOwn) {
    for (const std::filesystem::path& folder : {systemFolder(), programFolder()}) {
        const std::wstring library = Standins::vendorLibraryPath(VendorLibrary::Adl, "with_helper");
        const CopiedLibrary helper(std::filesystem::path(library).parent_path() / L"atihelper.dll", folder);
        const CopiedLibrary copy(library, folder);
        GpuAmd gpu;
        EXPECT_FALSE(gpu.initialise());
        EXPECT_EQ(gpu.lastError(), L"ADL2: No AMD card found") << folder;
        EXPECT_EQ(folderOfModule(L"atihelper.dll"), folder);
    }
}

TEST_F(LibrarySearch, AdlIsNotTakenFromElsewhere) {
    const OfferedFolder offered(
        std::filesystem::path(Standins::vendorLibraryPath(VendorLibrary::Adl)).parent_path());
    GpuAmd gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"Could not load AMD DLL");
    EXPECT_EQ(GetModuleHandleW(L"atiadlxx.dll"), nullptr);
}

TEST_F(LibrarySearch, AdlStaysInTheProcess) {
    const CopiedLibrary copy(Standins::vendorLibraryPath(VendorLibrary::Adl), programFolder());
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

TEST_F(LibrarySearch, CoreTempIsNotTakenFromElsewhere) {
    const OfferedFolder offered(
        std::filesystem::path(Standins::vendorLibraryPath(VendorLibrary::CoreTemp)).parent_path());
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
