#include "app/settings.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "tests/support/installation.h"
#include "tests/support/registry_override.h"

namespace {

struct Read {
    bool done;
    bool autostart;
    std::uint32_t delaySeconds;
    bool operator==(const Read&) const = default;
};

/// Reads with outputs that no entry of these tests has.
Read readSettings() {
    Read read{false, true, 77};
    read.done = ReadSettings(read.autostart, read.delaySeconds);
    return read;
}

constexpr Read kFailedRead{false, true, 77};

std::string narrow(const std::wstring& text) {
    return std::string(text.begin(), text.end());
}

class Settings : public testing::Test {
protected:
    Settings() { RegistryOverride::makeKey(HKEY_CURRENT_USER, kRunKey); }

    static void setEntry(const std::wstring& text) {
        RegistryOverride::setText(HKEY_CURRENT_USER, kRunKey, L"Kelvaro", text);
    }
    static void setInstallFolder(const std::wstring& folder) {
        RegistryOverride::setText(HKEY_LOCAL_MACHINE, kProgramKey, L"InstallDir", folder);
    }
    void install() { setInstallFolder(folder_.path()); }

    RegistryOverride registry_;
    InstallationFolder folder_;
};

TEST_F(Settings, WithoutAnEntryAreOffAndWithoutDelay) {
    EXPECT_EQ(readSettings(), (Read{true, false, 0}));
}

TEST_F(Settings, AnEntryMeansAutostartWithTheDelayInIt) {
    setEntry(L"\"C:\\Kelvaro\\Kelvaro.exe\" -delay15");
    EXPECT_EQ(readSettings(), (Read{true, true, 15}));
    setEntry(L"\"C:\\Kelvaro\\Kelvaro.exe\"");
    EXPECT_EQ(readSettings(), (Read{true, true, 0}));
    setEntry(L"");
    EXPECT_EQ(readSettings(), (Read{true, true, 0}));
}

TEST_F(Settings, AHandWrittenBlankBeforeTheNumberReadsAsNoDelay) {
    setEntry(L"\"C:\\Kelvaro\\Kelvaro.exe\" -delay 15");
    EXPECT_EQ(readSettings(), (Read{true, true, 0}));
}

TEST_F(Settings, AnEntryStoredWithoutTerminatorReadsAlike) {
    const std::wstring text = L"x -delay15";
    RegistryOverride::setValue(HKEY_CURRENT_USER,
                               kRunKey,
                               L"Kelvaro",
                               REG_SZ,
                               text.data(),
                               static_cast<DWORD>(text.size() * sizeof(wchar_t)));
    EXPECT_EQ(readSettings(), (Read{true, true, 15}));
}

TEST_F(Settings, AnEntryWithTwoTerminatorsHasNoNumber) {
    const std::wstring text(L"x -delay15\0\0", 12);
    RegistryOverride::setValue(HKEY_CURRENT_USER,
                               kRunKey,
                               L"Kelvaro",
                               REG_SZ,
                               text.data(),
                               static_cast<DWORD>(text.size() * sizeof(wchar_t)));
    EXPECT_EQ(readSettings(), (Read{true, true, 0}));
}

TEST_F(Settings, ADelayBeyondTheStartsRangeReadsAsNoneOfAnEntryThatIsThere) {
    setEntry(L"x -delay2147483647");
    EXPECT_EQ(readSettings(), (Read{true, true, 2'147'483'647}));
    setEntry(L"x -delay2147483648");
    EXPECT_EQ(readSettings(), (Read{true, true, 0}));
    setEntry(L"x -delay99999999999999999999");
    EXPECT_EQ(readSettings(), (Read{true, true, 0}));
}

TEST_F(Settings, AnEntryOf260BytesIsReadAndALongerOneIsAFailedRead) {
    const std::wstring option = L" -delay15";
    // With its terminator the first has 260 bytes as narrow text.
    setEntry(std::wstring(259 - option.size(), L'x') + option);
    EXPECT_EQ(readSettings(), (Read{true, true, 15}));
    setEntry(std::wstring(260 - option.size(), L'x') + option);
    EXPECT_EQ(readSettings(), kFailedRead);
}

TEST(SettingsWithoutRunKey, CanNeitherBeReadNorWritten) {
    const RegistryOverride registry;
    EXPECT_EQ(readSettings(), kFailedRead);
    EXPECT_FALSE(WriteSettings(false, 0));
    EXPECT_FALSE(WriteSettings(true, 5));
}

TEST_F(Settings, WriteTheQuotedPathAndTheDelayDirectlyBehindItsOption) {
    install();
    EXPECT_TRUE(WriteSettings(true, 15));
    EXPECT_EQ(runValue(), L"\"" + folder_.executable() + L"\" -delay15");
    EXPECT_EQ(readSettings(), (Read{true, true, 15}));
}

TEST_F(Settings, WriteNoOptionForNoDelay) {
    install();
    EXPECT_TRUE(WriteSettings(true, 0));
    EXPECT_EQ(runValue(), L"\"" + folder_.executable() + L"\"");
    EXPECT_EQ(readSettings(), (Read{true, true, 0}));
}

TEST_F(Settings, WritingReplacesAnEarlierLongerEntry) {
    install();
    setEntry(std::wstring(400, L'x'));
    EXPECT_TRUE(WriteSettings(true, 1));
    EXPECT_EQ(runValue(), L"\"" + folder_.executable() + L"\" -delay1");
}

TEST_F(Settings, WithoutAutostartTheEntryIsDeleted) {
    setEntry(L"x");
    EXPECT_TRUE(WriteSettings(false, 15));
    EXPECT_EQ(runValue(), std::nullopt);
}

TEST_F(Settings, DeletingAnAbsentEntrySucceeds) {
    EXPECT_TRUE(WriteSettings(false, 0));
    EXPECT_EQ(runValue(), std::nullopt);
}

TEST_F(Settings, WithoutInstallationNothingIsWritten) {
    setEntry(L"as it was");
    EXPECT_FALSE(WriteSettings(true, 15));
    EXPECT_EQ(runValue(), L"as it was");
}

TEST_F(Settings, WithoutTheProgramInItsFolderNothingIsWritten) {
    install();
    ASSERT_NE(DeleteFileW(folder_.executable().c_str()), FALSE);
    EXPECT_FALSE(WriteSettings(true, 15));
    EXPECT_EQ(runValue(), std::nullopt);
}

TEST_F(Settings, ExecutablePathIsTheInstallationFolderWithTheProgramsName) {
    install();
    std::string path;
    EXPECT_TRUE(FindExecutablePath(path));
    EXPECT_EQ(path, narrow(folder_.executable()));
}

TEST_F(Settings, ExecutablePathStaysAsItWasWhenItCannotBeFound) {
    std::string path = "untouched";
    EXPECT_FALSE(FindExecutablePath(path)) << "no key";
    RegistryOverride::makeKey(HKEY_LOCAL_MACHINE, kProgramKey);
    EXPECT_FALSE(FindExecutablePath(path)) << "no value";
    setInstallFolder(L"");
    EXPECT_FALSE(FindExecutablePath(path)) << "an empty folder";
    setInstallFolder(folder_.path() + L"\\missing");
    EXPECT_FALSE(FindExecutablePath(path)) << "no such folder";
    setInstallFolder(std::wstring(260, L'x'));
    EXPECT_FALSE(FindExecutablePath(path)) << "more than 260 bytes";
    EXPECT_EQ(path, "untouched");
}

TEST_F(Settings, ARunningProgramIsFoundToo) {
    install();
    // The loader keeps an image open for reading and execution, shared for reading and deletion only.
    const Panelix::UniqueFile image(CreateFileW(folder_.executable().c_str(),
                                                GENERIC_READ | GENERIC_EXECUTE,
                                                FILE_SHARE_READ | FILE_SHARE_DELETE,
                                                nullptr,
                                                OPEN_EXISTING,
                                                FILE_ATTRIBUTE_NORMAL,
                                                nullptr));
    ASSERT_TRUE(image);
    std::string path;
    EXPECT_TRUE(FindExecutablePath(path));
}

}  // namespace
