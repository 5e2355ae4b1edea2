#include <windows.h>

#include <shlobj.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "app/settings.h"
#include "framework/core/exported_function.h"
#include "framework/core/lcd_library.h"
#include "framework/core/lcd_sdk_abi.h"
#include "framework/core/unique_resource.h"
#include "framework/drawing/screenshot.h"
#include "stats/unread_mail.h"
#include "tests/hostile/random_inputs.h"
#include "tests/stats/free_handles.h"
#include "tests/stats/private_memory.h"
#include "tests/support/denied_key.h"
#include "tests/support/import_override.h"
#include "tests/support/installation.h"
#include "tests/support/registry_override.h"

// Every value of the registry that the program reads, with contents that nobody should have put there. What
// is to come out is computed from the contents alone.

namespace {

const std::wstring kMailKey = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UnreadMail";
constexpr wchar_t kCountValue[] = L"MessageCount";
constexpr wchar_t kDocumentsKey[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

/// Longest name of a key, in characters.
constexpr std::size_t kLongestKeyName = 255;

/// A value's type and bytes, which need not fit each other.
struct Contents {
    DWORD type = REG_NONE;
    std::vector<std::uint8_t> bytes;
};

bool isText(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

std::size_t randomSize(RandomInputs& inputs) {
    constexpr std::array<std::size_t, 20> kSizes = {0,   1,   2,   3,   4,   5,   7,   8,   9,    258,
                                                    259, 260, 261, 518, 519, 520, 521, 522, 1024, 65536};
    if (inputs.chance(40)) {
        return inputs.below(65537);
    }
    return inputs.chance(2) ? inputs.oneOf(kSizes) : inputs.below(600);
}

std::vector<std::uint8_t> bytesOf(std::wstring_view text, bool wide) {
    std::vector<std::uint8_t> bytes;
    for (const wchar_t character : text) {
        bytes.push_back(static_cast<std::uint8_t>(character));
        if (wide) {
            bytes.push_back(static_cast<std::uint8_t>(character >> 8));
        }
    }
    return bytes;
}

/// Random bytes, or one of `texts` with something after it, cut off, or with a few bytes changed.
Contents randomContents(RandomInputs& inputs, const std::vector<std::wstring>& texts) {
    constexpr std::array<DWORD, 12> kTypes = {REG_NONE,
                                              REG_SZ,
                                              REG_SZ,
                                              REG_EXPAND_SZ,
                                              REG_BINARY,
                                              REG_DWORD,
                                              REG_DWORD_BIG_ENDIAN,
                                              REG_LINK,
                                              REG_MULTI_SZ,
                                              REG_QWORD,
                                              0x1234,
                                              0xFFFFFFFF};
    Contents contents{inputs.oneOf(kTypes), {}};
    if (inputs.chance(3)) {
        contents.bytes = inputs.bytes(randomSize(inputs));
        return contents;
    }
    contents.bytes = bytesOf(inputs.oneOf(texts), isText(contents.type));
    switch (inputs.below(6)) {
        case 0:  // Without terminator, and perhaps with half a character at the end.
            contents.bytes.resize(contents.bytes.size() - inputs.below(4) % (contents.bytes.size() + 1));
            break;
        case 1:  // A zero within.
            for (int i = 0; i < 2 && !contents.bytes.empty(); ++i) {
                contents.bytes[inputs.below(contents.bytes.size()) & ~1U] = 0;
            }
            break;
        case 2:  // More after the terminator.
        case 3: {
            const std::vector<std::uint8_t> more = inputs.bytes(randomSize(inputs));
            contents.bytes.resize(contents.bytes.size() + inputs.below(3));
            contents.bytes.insert(contents.bytes.end(), more.begin(), more.end());
            break;
        }
        case 4:  // Right.
            contents.bytes.resize(contents.bytes.size() + (isText(contents.type) ? 2 : 1));
            break;
        default:
            contents.bytes.resize(randomSize(inputs));
            break;
    }
    return contents;
}

void store(HKEY root, const std::wstring& key, const wchar_t* name, const Contents& contents) {
    // The system stores a text's terminator when it finds one behind the given length.
    std::vector<std::uint8_t> bytes = contents.bytes;
    bytes.insert(bytes.end(), sizeof(wchar_t), 0xFF);
    RegistryOverride::setValue(
        root, key, name, contents.type, bytes.data(), static_cast<DWORD>(contents.bytes.size()));
}

/// Fails the test when, from its making to its end, handles were left open or memory was kept.
class NothingIsKept {
public:
    NothingIsKept() : handles_(greatestOfNextHandles()), memory_(privateMemoryBytes()) {}
    ~NothingIsKept() {
        EXPECT_LE(greatestOfNextHandles(), handles_ + 64);
        EXPECT_LE(privateMemoryBytes(), memory_ + std::size_t{1024} * 1024);
    }
    NothingIsKept(const NothingIsKept&) = delete;
    NothingIsKept& operator=(const NothingIsKept&) = delete;

private:
    std::uintptr_t handles_;
    std::size_t memory_;
};

class RegistryContents : public testing::Test {
    RegistryOverride registry_;
};

struct Account {
    std::wstring name;
    /// Nothing: the account has no count.
    std::optional<Contents> count;
    bool denied = false;
};

/// As documented: each name and each count is the limit of the next one's length.
std::int32_t expectedMail(const std::vector<Account>& accounts) {
    std::size_t nameLimit = 1024;
    std::size_t countLimit = sizeof(DWORD);
    std::uint64_t sum = 0;
    for (const Account& account : accounts) {
        if (account.name.size() >= nameLimit) {
            break;
        }
        nameLimit = account.name.size();
        if (account.denied) {
            continue;
        }
        if (!account.count || account.count->bytes.size() > countLimit) {
            return -1;
        }
        countLimit = account.count->bytes.size();
        DWORD count = 0;
        if (countLimit != 0) {
            std::memcpy(&count, account.count->bytes.data(), countLimit);
        }
        sum += count;
    }
    return static_cast<std::int32_t>(std::min<std::uint64_t>(sum, std::numeric_limits<std::int32_t>::max()));
}

/// In the order in which the registry has them.
std::vector<Account> randomAccounts(RandomInputs& inputs) {
    std::vector<Account> accounts(inputs.below(6));
    std::size_t length = 1 + inputs.below(kLongestKeyName);
    wchar_t first = L'a';
    for (Account& account : accounts) {
        account.name = first++ + std::wstring(length - 1, L'n');
        length = inputs.chance(6) ? 1 + inputs.below(kLongestKeyName) : 1 + inputs.below(length);
        if (inputs.chance(12)) {
            continue;
        }
        account.denied = inputs.chance(20);
        if (inputs.chance(3)) {
            account.count = randomContents(inputs, {L"7", L"12", L"\x7FFF\xFFFF"});
        } else {
            account.count = Contents{REG_DWORD, inputs.bytes(inputs.chance(4) ? inputs.below(5) : 4)};
        }
    }
    return accounts;
}

std::wstring accountKey(const std::wstring& name) {
    return kMailKey + L"\\" + name;
}

void storeAccounts(const std::vector<Account>& accounts) {
    RegDeleteTreeW(HKEY_CURRENT_USER, kMailKey.c_str());
    RegistryOverride::makeKey(HKEY_CURRENT_USER, kMailKey);
    for (const Account& account : accounts) {
        if (account.count) {
            store(HKEY_CURRENT_USER, accountKey(account.name), kCountValue, *account.count);
        } else {
            RegistryOverride::makeKey(HKEY_CURRENT_USER, accountKey(account.name));
        }
    }
}

TEST_F(RegistryContents, MailCountsAreRightOrUnavailable) {
    RandomInputs inputs("accounts of the mail list", 400, 10'000);
    storeAccounts(randomAccounts(inputs));
    const NothingIsKept nothing;
    while (inputs.next()) {
        const std::vector<Account> accounts = randomAccounts(inputs);
        storeAccounts(accounts);
        std::vector<std::unique_ptr<DeniedKey>> denied;
        for (const Account& account : accounts) {
            if (account.denied) {
                denied.push_back(std::make_unique<DeniedKey>(accountKey(account.name)));
            }
        }
        ASSERT_EQ(readUnreadMail(), expectedMail(accounts)) << inputs.place();
    }
}

TEST_F(RegistryContents, AccountsThatComeAndGoWhileTheyAreCountedCostNoMoreThanTheirCounts) {
    RandomInputs inputs("counts of accounts that come and go", 200, 5'000);
    constexpr DWORD kCount = 5;
    constexpr int kAccounts = 8;
    RegistryOverride::makeKey(HKEY_CURRENT_USER, kMailKey);
    std::atomic<bool> over{false};
    // Names that get shorter, so that all of them are walked through.
    const auto key = [](int account) {
        return accountKey(static_cast<wchar_t>(L'a' + account) +
                          std::wstring(static_cast<std::size_t>(20 - account * 2), L'n'));
    };
    std::thread owner([&] {
        for (int account = 0; !over; account = (account + 1) % kAccounts) {
            RegistryOverride::setValue(
                HKEY_CURRENT_USER, key(account), kCountValue, REG_DWORD, &kCount, sizeof(kCount));
            RegDeleteKeyW(HKEY_CURRENT_USER, key((account + kAccounts / 2) % kAccounts).c_str());
        }
    });
    {
        const NothingIsKept nothing;
        while (inputs.next()) {
            const std::int32_t mails = readUnreadMail();
            EXPECT_GE(mails, -1) << inputs.place();
            EXPECT_LE(mails, static_cast<std::int32_t>(kCount) * kAccounts) << inputs.place();
            EXPECT_TRUE(mails == -1 || mails % static_cast<std::int32_t>(kCount) == 0) << mails;
        }
    }
    over = true;
    owner.join();
}

/// A key that leads to another one, or nowhere.
class LinkKey {
public:
    LinkKey(const std::wstring& path, const std::wstring& target) {
        EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER,
                                  path.c_str(),
                                  0,
                                  nullptr,
                                  REG_OPTION_VOLATILE | REG_OPTION_CREATE_LINK,
                                  KEY_ALL_ACCESS | KEY_CREATE_LINK,
                                  nullptr,
                                  key_.put(),
                                  nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(RegSetValueExW(key_.get(),
                                 L"SymbolicLinkValue",
                                 0,
                                 REG_LINK,
                                 reinterpret_cast<const BYTE*>(target.data()),
                                 static_cast<DWORD>(target.size() * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }
    // A link that is opened by its path is what it leads to: only this handle is the link itself.
    ~LinkKey() {
        auto* const remove =
            Panelix::exportedFunction<LONG WINAPI(HANDLE)>(GetModuleHandleW(L"ntdll.dll"), "NtDeleteKey");
        EXPECT_TRUE(remove != nullptr && remove(key_.get()) == 0);
    }
    LinkKey(const LinkKey&) = delete;
    LinkKey& operator=(const LinkKey&) = delete;

private:
    Panelix::UniqueHkey key_;
};

TEST_F(RegistryContents, AnAccountThatIsALinkToNowhereIsNoAccount) {
    const DWORD count = 3;
    RegistryOverride::setValue(
        HKEY_CURRENT_USER, accountKey(L"a"), kCountValue, REG_DWORD, &count, sizeof(count));
    ASSERT_EQ(readUnreadMail(), 3);
    for (const wchar_t* target : {L"\\Registry\\User\\nowhere", L"nonsense", L"\\Registry\\Machine\\?"}) {
        const LinkKey link(accountKey(L"0 longer than the other"), target);
        EXPECT_EQ(readUnreadMail(), 3);
    }
}

// What the loader is asked for, in place of loading anything.
std::vector<std::wstring> askedFor;
std::vector<DWORD> askedWith;

HMODULE WINAPI noteLoad(LPCWSTR name, HANDLE, DWORD flags) {
    askedFor.emplace_back(name);
    askedWith.push_back(flags);
    return nullptr;
}

/// What the loader is to be asked for, nothing when it is not.
std::optional<std::wstring> expectedLibrary(const Contents& contents) {
    std::array<wchar_t, 260> path{};
    if (contents.bytes.size() > sizeof(path)) {
        return std::nullopt;
    }
    std::copy(contents.bytes.begin(), contents.bytes.end(), reinterpret_cast<std::uint8_t*>(path.data()));
    const std::wstring_view field(path.data(), path.size());
    const std::size_t length = field.find(L'\0');
    if (length == std::wstring_view::npos) {
        return std::nullopt;
    }
    std::wstring text(field.substr(0, length));
    std::replace(text.begin(), text.end(), L'/', L'\\');
    const bool drive = text.size() > 2 && text[1] == L':' && text[2] == L'\\';
    if (!drive && text.substr(0, 2) != L"\\\\" && text.find_first_of(L"\\:") != std::wstring::npos) {
        return std::nullopt;
    }
    return text;
}

TEST_F(RegistryContents, LcdLibraryIsAFullPathOrAFileNameOrNone) {
    RandomInputs inputs("registrations of the LCD library", 1'500, 30'000);
    const ImportOverride load("kernel32.dll", "LoadLibraryExW", noteLoad);
    const std::vector<std::wstring> texts = {L"C:\\Program Files\\Logitech Gaming Software\\LogitechLcd.dll",
                                             L"LogitechLcd.dll",
                                             L"C:/Program Files/Logitech Gaming Software/LogitechLcd.dll",
                                             L"\\\\server\\share\\LogitechLcd.dll",
                                             L"../LogitechLcd.dll",
                                             L"..\\LogitechLcd.dll",
                                             L"C:LogitechLcd.dll",
                                             L"\\LogitechLcd.dll",
                                             L"C:\\" + std::wstring(256, L'd'),
                                             L"C:\\" + std::wstring(257, L'd'),
                                             std::wstring(30'000, L'd'),
                                             L"LogitechLcd.dll:stream",
                                             L"%PATH%\\LogitechLcd.dll"};
    std::optional<NothingIsKept> nothing;
    while (inputs.next()) {
        const Contents contents = randomContents(inputs, texts);
        store(HKEY_LOCAL_MACHINE, Panelix::LcdSdk::kServerBinaryKey, nullptr, contents);
        askedFor.clear();
        askedWith.clear();
        ASSERT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", 2)) << inputs.place();
        const std::optional<std::wstring> expected = expectedLibrary(contents);
        ASSERT_EQ(askedFor.size(), expected ? 1U : 0U) << inputs.place();
        if (expected) {
            ASSERT_EQ(askedFor[0], *expected) << inputs.place();
            constexpr DWORD kPlaces = LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS |
                                      LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32;
            ASSERT_NE(askedWith[0], 0U) << inputs.place();
            ASSERT_EQ(askedWith[0] & ~kPlaces, 0U) << inputs.place();
        }
        if (!nothing) {
            nothing.emplace();
        }
    }
}

/// Of a value that is read by a narrow function; nothing when it is longer than what is taken of one.
std::optional<std::string> narrowValue(const Contents& contents) {
    std::string text(contents.bytes.begin(), contents.bytes.end());
    if (isText(contents.type)) {
        const int length = static_cast<int>(contents.bytes.size() / 2);
        std::wstring wide(static_cast<std::size_t>(length), L'\0');
        std::memcpy(wide.data(), contents.bytes.data(), wide.size() * sizeof(wchar_t));
        const int bytes = WideCharToMultiByte(CP_ACP, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
        text.resize(static_cast<std::size_t>(bytes));
        WideCharToMultiByte(CP_ACP, 0, wide.data(), length, text.data(), bytes, nullptr, nullptr);
    }
    return text.size() <= 260 ? std::optional(text) : std::nullopt;
}

/// The number that ends the text after the first "-delay".
std::uint32_t expectedDelay(std::string text) {
    if (!text.empty() && text.back() == '\0') {
        text.pop_back();
    }
    const std::size_t option = text.find("-delay");
    const std::string digits = option != std::string::npos ? text.substr(option + 6) : std::string();
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) {
        return 0;
    }
    std::uint64_t seconds = 0;
    for (const char digit : digits) {
        seconds = std::min<std::uint64_t>(seconds * 10 + static_cast<unsigned>(digit - '0'), 0xFFFFFFFF);
    }
    return seconds <= 0x7FFFFFFF ? static_cast<std::uint32_t>(seconds) : 0;
}

TEST_F(RegistryContents, RunValueIsReadAsItIsOrNotAtAll) {
    RandomInputs inputs("Run values", 1'500, 30'000);
    const std::vector<std::wstring> texts = {L"\"C:\\Kelvaro\\Kelvaro.exe\" -delay30",
                                             L"\"C:\\Kelvaro\\Kelvaro.exe\"",
                                             L"-delay2147483647",
                                             L"-delay2147483648",
                                             L"-delay99999999999999999999999999",
                                             L"-delay-5",
                                             L"-delay",
                                             L"-delay7-delay8",
                                             L"-delay 9",
                                             std::wstring(253, L'p') + L"-delay1",
                                             std::wstring(254, L'p') + L"-delay1",
                                             L"\x20AC -delay4"};
    std::optional<NothingIsKept> nothing;
    while (inputs.next()) {
        const Contents contents = randomContents(inputs, texts);
        store(HKEY_CURRENT_USER, kRunKey, L"Kelvaro", contents);
        const std::optional<std::string> expected = narrowValue(contents);
        bool autostart = false;
        std::uint32_t delay = 77;
        ASSERT_EQ(ReadSettings(autostart, delay), expected.has_value()) << inputs.place();
        ASSERT_EQ(autostart, expected.has_value()) << inputs.place();
        ASSERT_EQ(delay, expected ? expectedDelay(*expected) : 77U) << inputs.place();
        if (!nothing) {
            nothing.emplace();
        }
    }
}

TEST_F(RegistryContents, InstallationFolderIsOneWithTheProgramInItOrNone) {
    RandomInputs inputs("installation folders", 1'500, 30'000);
    const InstallationFolder installed;
    const std::vector<std::wstring> texts = {installed.path(),
                                             installed.path(),
                                             installed.path() + L"\\",
                                             installed.executable(),
                                             installed.executable() + std::wstring(L"\0x", 2),
                                             installed.path() + L"\\..",
                                             L"NUL",
                                             L"\\\\.\\pipe",
                                             std::wstring(246, L'p'),
                                             std::wstring(261, L'p')};
    int found = 0;
    std::optional<NothingIsKept> nothing;
    while (inputs.next()) {
        const Contents contents = randomContents(inputs, texts);
        store(HKEY_LOCAL_MACHINE, kProgramKey, L"InstallDir", contents);
        std::string path = "before";
        if (!FindExecutablePath(path)) {
            ASSERT_EQ(path, "before") << inputs.place();
            continue;
        }
        ++found;
        const std::optional<std::string> value = narrowValue(contents);
        ASSERT_TRUE(value) << inputs.place();
        ASSERT_EQ(path, value->substr(0, value->empty() ? 0 : value->size() - 1) + "\\Kelvaro.exe")
            << inputs.place();
        ASSERT_EQ(path.find('\0'), std::string::npos) << inputs.place();
        ASSERT_NE(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES) << inputs.place();
        if (!nothing) {
            nothing.emplace();
        }
    }
    EXPECT_GT(found, 0);
}

// The shell reads this one, for the program.
TEST_F(RegistryContents, DocumentsFolderIsAFolderOrNone) {
    RandomInputs inputs("Documents folders", 150, 3'000);
    const std::vector<std::wstring> texts = {L"C:\\users",
                                             L"%USERPROFILE%\\Documents",
                                             L"%" + std::wstring(400, L'p') + L"%",
                                             L"C:\\" + std::wstring(240, L'd'),
                                             L"C:\\" + std::wstring(400, L'd'),
                                             L"Q:\\nowhere",
                                             L"relative",
                                             L"\\\\?\\C:\\users"};
    std::optional<NothingIsKept> nothing;
    while (inputs.next()) {
        store(HKEY_CURRENT_USER, kDocumentsKey, L"Personal", randomContents(inputs, texts));
        const std::wstring path = Panelix::screenshotPath();
        ASSERT_LT(path.size(), MAX_PATH + 60U) << inputs.place();
        const std::size_t folder = path.find(L"\\kelvaro shot ");
        ASSERT_TRUE(path.empty() || (folder != std::wstring::npos && folder > 0)) << inputs.place();
        if (!nothing) {
            nothing.emplace();
        }
    }
}

}  // namespace
