#include "app/settings.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "app/run_entry.h"
#include "tests/support/import_override.h"
#include "tests/support/installation.h"
#include "tests/support/registry_override.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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

/// For as long as it lives, notes the calls with which the tested code works on the registry, and refuses
/// those that a test names.
class ObservedRegistry {
public:
    ObservedRegistry() { current_ = this; }
    ~ObservedRegistry() { current_ = nullptr; }
    ObservedRegistry(const ObservedRegistry&) = delete;
    ObservedRegistry& operator=(const ObservedRegistry&) = delete;

    /// Path and access of each key that was opened, in order.
    std::vector<std::pair<std::string, REGSAM>> opened;
    /// Keys that are open, with the number of times that they are.
    std::map<HKEY, int> open;
    /// Bytes handed to the writing of a value.
    std::vector<DWORD> writtenBytes;
    int closes = 0;

    bool refuseWrite = false;
    bool refuseDelete = false;
    /// The close, from 1, that is answered with an error. 0: none.
    int refusedClose = 0;

private:
    static LSTATUS WINAPI openKey(HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key) {
        const LSTATUS status =
            current_->open_.original<decltype(openKey)>()(root, path, options, access, key);
        if (status == ERROR_SUCCESS) {
            current_->opened.emplace_back(path, access);
            ++current_->open[*key];
        }
        return status;
    }
    static LSTATUS WINAPI
    setValue(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD bytes) {
        if (current_->refuseWrite) {
            return ERROR_ACCESS_DENIED;
        }
        current_->writtenBytes.push_back(bytes);
        return current_->write_.original<decltype(setValue)>()(key, name, reserved, type, data, bytes);
    }
    static LSTATUS WINAPI deleteValue(HKEY key, LPCSTR name) {
        return current_->refuseDelete ? ERROR_ACCESS_DENIED
                                      : current_->delete_.original<decltype(deleteValue)>()(key, name);
    }
    static LSTATUS WINAPI closeKey(HKEY key) {
        const auto found = current_->open.find(key);
        if (found != current_->open.end() && --found->second == 0) {
            current_->open.erase(found);
        }
        const LSTATUS status = current_->close_.original<decltype(closeKey)>()(key);
        return ++current_->closes == current_->refusedClose ? ERROR_INVALID_HANDLE : status;
    }

    static inline ObservedRegistry* current_ = nullptr;
    ImportOverride open_{"advapi32.dll", "RegOpenKeyExA", openKey};
    ImportOverride write_{"advapi32.dll", "RegSetValueExA", setValue};
    ImportOverride delete_{"advapi32.dll", "RegDeleteValueA", deleteValue};
    ImportOverride close_{"advapi32.dll", "RegCloseKey", closeKey};
};

class Settings : public testing::Test {
protected:
    Settings() { RegistryOverride::makeKey(HKEY_CURRENT_USER, kRunKey); }

    static void setEntry(const std::wstring& text) {
        RegistryOverride::setText(HKEY_CURRENT_USER, kRunKey, L"Kelvaro", text);
    }
    static void setInstallFolder(const std::wstring& folder) {
        RegistryOverride::setText(HKEY_LOCAL_MACHINE, kProgramKey, L"InstallDir", folder);
    }
    static void setUnterminated(HKEY root,
                                const wchar_t* key,
                                const wchar_t* name,
                                const std::wstring& text) {
        // The system adds a terminator that it finds directly after the text.
        const std::wstring longer = text + L'!';
        RegistryOverride::setValue(
            root, key, name, REG_SZ, longer.data(), static_cast<DWORD>(text.size() * sizeof(wchar_t)));
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
    setUnterminated(HKEY_CURRENT_USER, kRunKey, L"Kelvaro", L"x -delay15");
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

TEST_F(Settings, WriteTheQuotedPathAndTheDelayDirectlyAfterItsOption) {
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

TEST_F(Settings, OfAnInstallationFolderWithoutTerminatorTheLastCharacterIsNotPartOfIt) {
    std::string path = "untouched";
    setUnterminated(HKEY_LOCAL_MACHINE, kProgramKey, L"InstallDir", folder_.path());
    EXPECT_FALSE(FindExecutablePath(path));
    EXPECT_EQ(path, "untouched");
    setUnterminated(HKEY_LOCAL_MACHINE, kProgramKey, L"InstallDir", folder_.path() + L"?");
    EXPECT_TRUE(FindExecutablePath(path));
    EXPECT_EQ(path, narrow(folder_.executable()));
}

TEST_F(Settings, AnInstallationFolderWithAZeroWithinIsNone) {
    std::string path = "untouched";
    for (const std::wstring& part : {folder_.executable(), folder_.path()}) {
        setInstallFolder(part + L'\0' + L"behind");
        EXPECT_FALSE(FindExecutablePath(path));
        EXPECT_FALSE(WriteSettings(true, 15));
    }
    EXPECT_EQ(path, "untouched");
}

TEST_F(Settings, APathBeyondAsciiIsReadAndWrittenInTheAnsiCodePage) {
    ASSERT_EQ(GetACP(), 1252U);
    // U-umlaut and the euro sign: one byte each there, and neither is that of UTF-8 or Latin-1 alone.
    const InstallationFolder folder(L" \u00FC\u20AC");
    setInstallFolder(folder.path());
    std::string path;
    ASSERT_TRUE(FindExecutablePath(path));
    const std::string end = " \xFC\x80\\Kelvaro.exe";
    EXPECT_EQ(path.substr(path.size() - end.size()), end);

    EXPECT_TRUE(WriteSettings(true, 15));
    EXPECT_EQ(runValue(), L"\"" + folder.executable() + L"\" -delay15");
    EXPECT_EQ(readSettings(), (Read{true, true, 15}));
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

TEST_F(Settings, AProgramThatIsOpenForWritingOrDeletionIsFoundToo) {
    install();
    for (const DWORD access : {DWORD{GENERIC_WRITE}, DWORD{DELETE}}) {
        const Panelix::UniqueFile other(CreateFileW(folder_.executable().c_str(),
                                                    access,
                                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                                    nullptr,
                                                    OPEN_EXISTING,
                                                    FILE_ATTRIBUTE_NORMAL,
                                                    nullptr));
        ASSERT_TRUE(other);
        std::string path;
        EXPECT_TRUE(FindExecutablePath(path));
    }
}

TEST_F(Settings, TheProgramsFileIsClosedAgain) {
    install();
    std::string path;
    ASSERT_TRUE(FindExecutablePath(path));
    // Shared with nobody.
    const Panelix::UniqueFile file(CreateFileW(folder_.executable().c_str(),
                                               GENERIC_READ,
                                               0,
                                               nullptr,
                                               OPEN_EXISTING,
                                               FILE_ATTRIBUTE_NORMAL,
                                               nullptr));
    EXPECT_TRUE(file);
}

TEST_F(Settings, EveryKeyIsClosedAgainWhateverFails) {
    ObservedRegistry registry;
    std::string path;
    const auto useAll = [&path] {
        readSettings();
        WriteSettings(true, 15);
        WriteSettings(false, 0);
        FindExecutablePath(path);
    };
    useAll();
    install();
    useAll();
    registry.refuseWrite = true;
    registry.refuseDelete = true;
    useAll();
    setEntry(std::wstring(300, L'x'));
    setInstallFolder(std::wstring(300, L'x'));
    useAll();
    ASSERT_EQ(registry.opened.size(), 18U);
    EXPECT_THAT(registry.open, IsEmpty());
}

// What only administrators may do fails for everybody else, who would then never have an entry.
TEST_F(Settings, KeysAreOpenedForNothingElseThanWhatIsDone) {
    install();
    ObservedRegistry registry;
    readSettings();
    WriteSettings(true, 15);
    const std::string runKey = narrow(kRunKey);
    EXPECT_THAT(registry.opened,
                ElementsAre(std::pair{runKey, REGSAM{KEY_QUERY_VALUE | KEY_SET_VALUE}},
                            std::pair{runKey, REGSAM{KEY_QUERY_VALUE | KEY_SET_VALUE}},
                            std::pair{narrow(kProgramKey), REGSAM{KEY_QUERY_VALUE}}));
}

TEST_F(Settings, TheEntryIsHandedOverWithoutItsTerminator) {
    install();
    ObservedRegistry registry;
    EXPECT_TRUE(WriteSettings(true, 15));
    EXPECT_THAT(registry.writtenBytes,
                ElementsAre(static_cast<DWORD>(runEntryText(narrow(folder_.executable()), 15).size())));
}

TEST_F(Settings, ARefusedChangeOfTheEntryIsReported) {
    install();
    setEntry(L"as it was");
    ObservedRegistry registry;
    registry.refuseWrite = true;
    EXPECT_FALSE(WriteSettings(true, 15));
    registry.refuseDelete = true;
    EXPECT_FALSE(WriteSettings(false, 15));
    EXPECT_EQ(runValue(), L"as it was");
}

TEST_F(Settings, ARefusedCloseIsReportedWhicheverItIs) {
    install();
    setEntry(L"as it was");
    ObservedRegistry registry;
    const auto refuse = [&registry](int close) {
        registry.closes = 0;
        registry.refusedClose = close;
    };
    refuse(1);
    EXPECT_FALSE(readSettings().done);
    std::string path = "untouched";
    refuse(1);
    EXPECT_FALSE(FindExecutablePath(path));
    EXPECT_EQ(path, "untouched");

    refuse(1);
    EXPECT_FALSE(WriteSettings(true, 15)) << "the installation's key";
    EXPECT_EQ(runValue(), L"as it was");
    refuse(2);
    EXPECT_FALSE(WriteSettings(true, 15)) << "the Run key";
    refuse(1);
    EXPECT_FALSE(WriteSettings(false, 15));
    refuse(0);
    EXPECT_TRUE(WriteSettings(true, 15));
}

}  // namespace
