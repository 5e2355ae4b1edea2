#include "tests/bundle/machine_before.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>

#include "standins/protected_key.h"
#include "tests/support/registry_override.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace Bundle;

constexpr wchar_t kEnumerator[] = L"SOFTWARE\\Classes\\CLSID\\{BCDE0395-E52F-467C-8E3D-C4579291692E}";
constexpr wchar_t kServer[] =
    L"SOFTWARE\\Classes\\CLSID\\{BCDE0395-E52F-467C-8E3D-C4579291692E}\\InprocServer32";
constexpr wchar_t kLcdBinary[] =
    L"SOFTWARE\\Classes\\CLSID\\{D0E790A5-01A7-49AE-AE0B-E986BDD0C21B}\\ServerBinary";
constexpr wchar_t kRun[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr wchar_t kProgram[] = L"Software\\Kelvaro";

/// A machine with a sound system and entries of its own, and no LCD library.
class Machine : public testing::Test {
protected:
    Machine() {
        RegistryOverride::setValue(
            HKEY_LOCAL_MACHINE, kServer, nullptr, REG_EXPAND_SZ, L"%SystemRoot%\\x.dll", 38);
        RegistryOverride::setText(HKEY_LOCAL_MACHINE, kServer, L"ThreadingModel", L"both");
        RegistryOverride::setText(HKEY_CURRENT_USER, kRun, L"Odd\tname % with\n\x00FC", L"value");
        RegistryOverride::setValue(HKEY_CURRENT_USER, kRun, L"Empty", REG_BINARY, "", 0);
        RegistryOverride::setText(HKEY_LOCAL_MACHINE, kProgram, L"InstallDir", L"C:\\Kelvaro");
        RegistryOverride::makeKey(HKEY_LOCAL_MACHINE, std::wstring(kProgram) + L"\\Below\\it");
    }

    RegistryOverride registry;
};

TEST_F(Machine, IsWhatItWasAfterEverythingWasChanged) {
    const auto sound = readTree(HKEY_LOCAL_MACHINE, kEnumerator);
    const auto run = readTree(HKEY_CURRENT_USER, kRun);
    const auto program = readTree(HKEY_LOCAL_MACHINE, kProgram);
    ASSERT_TRUE(sound && run && program);
    // As the next start of an interrupted run has it.
    const MachineBefore before = machineFromText(toText(readMachine()));

    RegistryOverride::setText(HKEY_LOCAL_MACHINE, kServer, nullptr, L"C:\\standin.dll");
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, kServer, L"New", L"value");
    RegistryOverride::setText(
        HKEY_LOCAL_MACHINE, std::wstring(kEnumerator) + L"\\New key", nullptr, L"value");
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, kLcdBinary, nullptr, L"C:\\lcd.dll");
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kProgram);
    RegDeleteTreeW(HKEY_CURRENT_USER, kRun);
    restore(before);

    EXPECT_TRUE(readTree(HKEY_LOCAL_MACHINE, kEnumerator) == sound);
    EXPECT_TRUE(readTree(HKEY_CURRENT_USER, kRun) == run);
    EXPECT_TRUE(readTree(HKEY_LOCAL_MACHINE, kProgram) == program);
    EXPECT_FALSE(
        readTree(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\CLSID\\{D0E790A5-01A7-49AE-AE0B-E986BDD0C21B}"));
}

TEST_F(Machine, KeysThatEndedTestsLeftAreRemoved) {
    RegistryOverride::setText(HKEY_CURRENT_USER, L"Software\\KelvaroTest123\\User", nullptr, L"value");
    RegistryOverride::setText(HKEY_CURRENT_USER, L"Software\\Kelv", nullptr, L"value");
    restore(readMachine());
    EXPECT_FALSE(readTree(HKEY_CURRENT_USER, L"Software\\KelvaroTest123"));
    EXPECT_TRUE(readTree(HKEY_CURRENT_USER, L"Software\\Kelv"));
}

TEST_F(Machine, FilesThatWereNotThereAreRemovedAndNoOthers) {
    const TemporaryFolder folder;
    MachineBefore before;
    before.absentFiles = {folder.path() + L"\\tests.dll", folder.path() + L"\\never.dll"};
    for (const wchar_t* name : {L"\\tests.dll", L"\\other.dll"}) {
        std::ofstream(std::filesystem::path(folder.path() + name)) << "x";
    }
    restore(machineFromText(toText(before)));
    EXPECT_EQ(folder.files(), std::vector<std::wstring>{L"other.dll"});
}

TEST_F(Machine, TextThatIsNotWholeIsRefused) {
    const std::string text = toText(readMachine());
    EXPECT_NO_THROW(machineFromText(text));
    EXPECT_THROW(machineFromText(""), std::runtime_error);
    EXPECT_THROW(machineFromText("something else\nend\n"), std::runtime_error);
    EXPECT_THROW(machineFromText(text.substr(0, text.size() - 4)), std::runtime_error);
    EXPECT_THROW(machineFromText(text.substr(0, text.find("\nkey")) + "\nodd\nend\n"), std::runtime_error);
}

TEST_F(Machine, KeysOfTheInstallersCanBeWrittenByTheRightToRestore) {
    {
        const auto key = Standins::openForRestoring(HKEY_LOCAL_MACHINE, kServer);
        ASSERT_TRUE(key);
        EXPECT_EQ(RegSetValueExW(key.get(), L"New", 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
    }
    EXPECT_TRUE(readTree(HKEY_LOCAL_MACHINE, kServer)->values.contains(L"New"));
}

}  // namespace
