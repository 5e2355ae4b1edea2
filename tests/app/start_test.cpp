#include "app/start.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "framework/core/unique_resource.h"
#include "tests/support/import_override.h"

namespace {

using testing::ElementsAre;

constexpr wchar_t kInstanceMutex[] = L"KELVARO_G19";

HINSTANCE thisModule() {
    return GetModuleHandleW(nullptr);
}

bool instanceIsTaken() {
    const Panelix::UniqueHandle instance(OpenMutexW(SYNCHRONIZE, FALSE, kInstanceMutex));
    return static_cast<bool>(instance);
}

struct Box {
    HWND owner;
    std::wstring text;
    std::wstring caption;
    UINT style;
    bool operator==(const Box&) const = default;
};

std::vector<Box> boxes;

int WINAPI noteBox(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style) {
    boxes.push_back({owner, text, caption, style});
    return IDOK;
}

TEST(StartKelvaro, SaysInATopmostErrorBoxThatItIsAlreadyRunning) {
    Panelix::UniqueHandle first(CreateMutexW(nullptr, FALSE, kInstanceMutex));
    {
        const ImportOverride box("user32.dll", "MessageBoxW", noteBox);
        EXPECT_EQ(startKelvaro(thisModule()), 1);
    }
    EXPECT_THAT(boxes, ElementsAre(Box{nullptr, L"Kelvaro is already running!", L"Kelvaro Error", 0x42010}));
    first.reset();
    EXPECT_FALSE(instanceIsTaken()) << "the second has given its handle back";
}

/// The command line that the tested code sees.
std::wstring commandLine;

LPWSTR WINAPI giveCommandLine() {
    return commandLine.data();
}

std::vector<DWORD> searches;

BOOL WINAPI noteSearch(DWORD folders) {
    EXPECT_FALSE(instanceIsTaken()) << "nothing comes before";
    searches.push_back(folders);
    return TRUE;
}

TEST(StartKelvaro, LooksForLibrariesInTheSystemFolderBeforeItDoesAnything) {
    const ImportOverride search("kernel32.dll", "SetDefaultDllDirectories", noteSearch);
    const ImportOverride line("kernel32.dll", "GetCommandLineW", giveCommandLine);
    commandLine = L"Kelvaro.exe -delay soon";
    EXPECT_THROW(startKelvaro(thisModule()), std::invalid_argument);
    EXPECT_THAT(searches, ElementsAre(0xC00U));
}

TEST(StartKelvaro, KeepsWindowsFromShowingABoxAboutADamagedLibrary) {
    const ImportOverride line("kernel32.dll", "GetCommandLineW", giveCommandLine);
    commandLine = L"Kelvaro.exe -delay soon";
    SetErrorMode(SEM_NOOPENFILEERRORBOX);
    EXPECT_THROW(startKelvaro(thisModule()), std::invalid_argument);
    EXPECT_EQ(GetErrorMode(), UINT{SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX});
}

TEST(StartKelvaro, LeavesTheInstanceWithAnUnreadableDelay) {
    const ImportOverride line("kernel32.dll", "GetCommandLineW", giveCommandLine);
    commandLine = L"Kelvaro.exe -delay soon";
    EXPECT_THROW(startKelvaro(thisModule()), std::invalid_argument);
    EXPECT_FALSE(instanceIsTaken());
    commandLine = L"Kelvaro.exe -delay 2147483648";
    EXPECT_THROW(startKelvaro(thisModule()), std::out_of_range);
    EXPECT_FALSE(instanceIsTaken());
}

struct Wait {
    DWORD ms;
    bool instanceWasTaken;
};

void WINAPI leaveInsteadOfWaiting(DWORD ms) {
    throw Wait{ms, instanceIsTaken()};
}

TEST(StartKelvaro, WaitsAsLongAsTheDelaySaysOnceItHasTheInstance) {
    struct Case {
        const wchar_t* line;
        DWORD ms;
    };
    const ImportOverride line("kernel32.dll", "GetCommandLineW", giveCommandLine);
    for (const Case& c : {
             Case{L"Kelvaro.exe -delay0", 0},
             Case{L"Kelvaro.exe -delay 20", 20'000},
             Case{L"Kelvaro.exe -delay -1", 4'294'966'296},
         }) {
        commandLine = c.line;
        try {
            const ImportOverride sleep("kernel32.dll", "Sleep", leaveInsteadOfWaiting);
            startKelvaro(thisModule());
            ADD_FAILURE() << "did not wait";
        } catch (const Wait& wait) {
            EXPECT_EQ(wait.ms, c.ms);
            EXPECT_TRUE(wait.instanceWasTaken);
        }
        EXPECT_FALSE(instanceIsTaken());
    }
}

}  // namespace
