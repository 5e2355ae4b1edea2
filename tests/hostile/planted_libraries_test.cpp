#include <windows.h>

#include <gmock/gmock.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "app/resource_ids.h"
#include "framework/core/command_codes.h"
#include "standins/built_files.h"
#include "tests/e2e/desktop_fixture.h"
#include "tests/support/temporary_folder.h"

namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::wstring markingLibrary() {
    return (Standins::buildFolder() / L"tests" / L"hostile" / L"marking_library.dll").wstring();
}

/// What the program and the system's libraries in it load by name, the vendors' near names, and what such
/// programs load on other systems.
constexpr std::array kNames = {L"nvapi64.dll",
                               L"nvapi.dll",
                               L"atiadlxx.dll",
                               L"atiadlxy.dll",
                               L"GetCoreTempInfo.dll",
                               L"GetCoreTempInfo64.dll",
                               L"GetCoreTempInfoNET.dll",
                               L"LogitechLcd.dll",
                               L"LogitechLcdEnginesWrapper.dll",
                               L"XINPUT1_4.dll",
                               L"xinput1_3.dll",
                               L"xinput9_1_0.dll",
                               L"dwmapi.dll",
                               L"uxtheme.dll",
                               L"TextShaping.dll",
                               L"gdiplus.dll",
                               L"WindowsCodecs.dll",
                               L"windowscodecsext.dll",
                               L"MMDevAPI.dll",
                               L"AudioSes.dll",
                               L"propsys.dll",
                               L"WINMM.dll",
                               L"winmmbase.dll",
                               L"msimg32.dll",
                               L"usp10.dll",
                               L"DWrite.dll",
                               L"d2d1.dll",
                               L"comctl32.dll",
                               L"SHCORE.dll",
                               L"SHFOLDER.dll",
                               L"version.dll",
                               L"CRYPTBASE.dll",
                               L"profapi.dll",
                               L"WinTypes.dll",
                               L"kernel.appcore.dll",
                               L"clbcatq.dll",
                               L"MSCTF.dll",
                               L"oleacc.dll",
                               L"TextInputFramework.dll",
                               L"CoreMessaging.dll",
                               L"CoreUIComponents.dll",
                               L"wtsapi32.dll",
                               L"winsta.dll",
                               L"DEVOBJ.dll",
                               L"cfgmgr32.dll",
                               L"AVRT.dll",
                               L"ntmarta.dll",
                               L"Secur32.dll",
                               L"SSPICLI.DLL",
                               L"wer.dll",
                               L"faultrep.dll",
                               L"apphelp.dll",
                               L"policymanager.dll",
                               L"Windows.Storage.dll",
                               L"edputil.dll",
                               L"netutils.dll",
                               L"srvcli.dll",
                               L"cscapi.dll",
                               L"LINKINFO.dll",
                               L"ntshrui.dll",
                               L"iertutil.dll",
                               L"urlmon.dll",
                               L"wldp.dll",
                               L"winhttp.dll",
                               L"IPHLPAPI.DLL",
                               L"dbghelp.dll",
                               L"imm32.dll",
                               L"RpcRtRemote.dll",
                               L"PolicyConfig.dll",
                               L"winepulse.drv",
                               L"winealsa.drv",
                               L"wineoss.drv",
                               L"opengl32.dll"};

/// What our own code, and a driver of the system's, asks for while the program runs. What the program is
/// linked with, and what that is linked with, is loaded before any code of ours.
constexpr std::array kAskedForLater = {L"nvapi64.dll",
                                       L"nvapi.dll",
                                       L"atiadlxx.dll",
                                       L"atiadlxy.dll",
                                       L"GetCoreTempInfo.dll",
                                       L"GetCoreTempInfo64.dll",
                                       L"LogitechLcd.dll",
                                       L"PolicyConfig.dll",
                                       L"TextShaping.dll",
                                       L"winealsa.drv",
                                       L"wineoss.drv"};

/// A folder with the marking library under each of these names.
class PlantedFolder {
public:
    enum class As { Copies, OneFile };

    /// One file under all names is quicker; of several loads only the first leaves its mark then.
    template <typename Names>
    PlantedFolder(const Names& names, As kind) {
        std::wstring source = markingLibrary();
        for (const wchar_t* name : names) {
            const std::wstring file = folder_.path() + L"\\" + name;
            if (kind == As::OneFile && CreateHardLinkW(file.c_str(), source.c_str(), nullptr) != FALSE) {
                continue;
            }
            EXPECT_NE(CopyFileW(source.c_str(), file.c_str(), TRUE), FALSE);
            source = file;
        }
    }

    const std::wstring& path() const { return folder_.path(); }

    /// Those of its libraries that some process has loaded.
    std::vector<std::wstring> loaded() const {
        std::vector<std::wstring> marks;
        for (const std::wstring& file : folder_.files()) {
            if (file.ends_with(L".loaded")) {
                marks.push_back(file);
            }
        }
        return marks;
    }

private:
    TemporaryFolder folder_;
};

/// Programs that are started meanwhile have this current directory, and these folders first in their PATH.
class OfferedPlaces {
public:
    OfferedPlaces(const std::wstring& current, const std::wstring& path)
        : before_(std::filesystem::current_path()) {
        std::wstring buffer(32'767, L'\0');
        buffer.resize(GetEnvironmentVariableW(L"PATH", buffer.data(), 32'767));
        pathBefore_ = buffer;
        EXPECT_NE(SetEnvironmentVariableW(L"PATH", (path + L";" + buffer).c_str()), FALSE);
        EXPECT_NE(SetCurrentDirectoryW(current.c_str()), FALSE);
    }
    ~OfferedPlaces() {
        SetCurrentDirectoryW(before_.c_str());
        SetEnvironmentVariableW(L"PATH", pathBefore_.c_str());
    }
    OfferedPlaces(const OfferedPlaces&) = delete;
    OfferedPlaces& operator=(const OfferedPlaces&) = delete;

private:
    std::filesystem::path before_;
    std::wstring pathBefore_;
};

class PlantedLibraries : public KelvaroOnTheDesktop {
protected:
    /// From the start over menu, dialog and box to the end: what is loaded late is loaded then.
    void useEverything(const std::wstring& program) {
        kelvaro = std::make_unique<ChildProcess>(program);
        window = waitForPreview(*kelvaro);
        ASSERT_NE(window, nullptr);
        ASSERT_NE(openTrayMenu(window), nullptr);
        EXPECT_TRUE(dismissMenu(window));
        ask(Panelix::kCommandSettings);
        const HWND dialog = waitForVisibleWindow(kelvaro->id(), L"#32770", L"Settings");
        pressButton(dialog, IDC_CANCEL);
        EXPECT_TRUE(waitUntilGone(dialog));
        ask(Panelix::kCommandAbout);
        const HWND box = waitForVisibleWindow(kelvaro->id(), L"#32770", L"About Kelvaro");
        EXPECT_TRUE(waitFor([box] {
            pressButton(box, IDOK);
            return IsWindow(box) == FALSE;
        }));
        ask(Panelix::kCommandExit);
        EXPECT_EQ(kelvaro->waitForExit(), DWORD{0});
    }
};

TEST_F(PlantedLibraries, AreLoadedFromBesideTheProgramOnlyAndOnlyTheTwoThatMayLieThere) {
    const PlantedFolder current(kNames, PlantedFolder::As::OneFile);
    const PlantedFolder first(kNames, PlantedFolder::As::OneFile);
    const PlantedFolder second(kNames, PlantedFolder::As::OneFile);
    const PlantedFolder beside(kAskedForLater, PlantedFolder::As::Copies);
    const std::wstring program = beside.path() + L"\\Kelvaro.exe";
    ASSERT_NE(CopyFileW(kelvaroProgram().c_str(), program.c_str(), TRUE), FALSE);
    const OfferedPlaces places(current.path(), first.path() + L";" + second.path());
    // Also when the LCD library is registered by a way from the current directory, or not at all.
    std::vector<std::wstring> registrations = {L"nvapi.dll\\..\\LogitechLcd.dll"};
    if (std::getenv("KELVARO_ALL") != nullptr) {
        registrations.insert(registrations.end(), {L"", L".\\LogitechLcd.dll", L"\\LogitechLcd.dll"});
    }
    for (const std::wstring& registered : registrations) {
        const LcdRegistrationScope registration{registered};
        ASSERT_NO_FATAL_FAILURE(useEverything(program));
    }
    EXPECT_THAT(current.loaded(), IsEmpty());
    EXPECT_THAT(first.loaded(), IsEmpty());
    EXPECT_THAT(second.loaded(), IsEmpty());
    EXPECT_THAT(beside.loaded(), UnorderedElementsAre(L"atiadlxx.dll.loaded", L"GetCoreTempInfo.dll.loaded"));
}

}  // namespace
