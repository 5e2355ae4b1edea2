#include "framework/core/tray_icon.h"

#include <windows.h>

#include <shlwapi.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "framework/core/unique_resource.h"
#include "tests/support/import_recorder.h"

namespace {

using testing::Each;
using testing::ElementsAre;

/// A window for an icon, gone with the object.
class IconWindow {
public:
    IconWindow()
        : window_(CreateWindowExW(
              0, L"Static", L"icon", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr)) {}
    ~IconWindow() { DestroyWindow(window_); }
    IconWindow(const IconWindow&) = delete;
    IconWindow& operator=(const IconWindow&) = delete;

    HWND get() const { return window_; }

    /// Whether the notification area knows icon 1 of the window: it refuses to change one that it does not.
    bool hasIcon() const {
        NOTIFYICONDATAW record{};
        record.cbSize = sizeof(record);
        record.hWnd = window_;
        record.uID = 1;
        return Shell_NotifyIconW(NIM_MODIFY, &record) != FALSE;
    }

private:
    HWND window_;
};

TEST(TrayIcon, RecordHasIdOneTheCallbackMessageAndTheTip) {
    const auto window = reinterpret_cast<HWND>(std::intptr_t{0x1234});
    const NOTIFYICONDATAW record = Panelix::trayRecord(976, window, L"Kelvaro");
    EXPECT_EQ(record.cbSize, 976U);
    EXPECT_EQ(record.hWnd, window);
    EXPECT_EQ(record.uID, 1U);
    EXPECT_EQ(record.uFlags, 7U);
    EXPECT_EQ(record.uCallbackMessage, 0x8000U);
    EXPECT_STREQ(record.szTip, L"Kelvaro");
    EXPECT_EQ(record.hIcon, nullptr);
    EXPECT_EQ(record.dwState, 0U);
}

TEST(TrayIcon, TipIsCutTo127Characters) {
    for (const std::size_t length : {std::size_t{0}, std::size_t{127}, std::size_t{128}, std::size_t{500}}) {
        const NOTIFYICONDATAW record = Panelix::trayRecord(952, nullptr, std::wstring(length, L'x'));
        EXPECT_EQ(std::wstring(record.szTip).size(), std::min(length, std::size_t{127}));
        EXPECT_EQ(record.dwState, 0U) << "nothing is written after the tip";
    }
}

TEST(TrayIcon, IsInTheNotificationAreaFromAddToRemove) {
    const IconWindow window;
    Panelix::TrayIcon icon;
    EXPECT_FALSE(window.hasIcon());
    icon.add(nullptr, IDI_APPLICATION, window.get(), L"tip");
    EXPECT_TRUE(window.hasIcon());
    icon.remove();
    EXPECT_FALSE(window.hasIcon());
}

TEST(TrayIcon, IsRestoredAfterTheNotificationAreaLostIt) {
    const IconWindow window;
    Panelix::TrayIcon icon;
    icon.add(nullptr, IDI_APPLICATION, window.get(), L"tip");
    NOTIFYICONDATAW record = Panelix::trayRecord(sizeof(NOTIFYICONDATAW), window.get(), L"");
    ASSERT_NE(Shell_NotifyIconW(NIM_DELETE, &record), FALSE);
    icon.restore();
    EXPECT_TRUE(window.hasIcon());
    icon.remove();
}

TEST(TrayIcon, WithoutPictureIsNoFailure) {
    const IconWindow window;
    Panelix::TrayIcon icon;
    icon.add(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(4711), window.get(), L"tip");
    EXPECT_TRUE(window.hasIcon());
    icon.remove();
}

/// Of icon.rc.
const LPCWSTR kIcon = MAKEINTRESOURCEW(1);

/// What an icon looks like, 0xAARRGGBB row by row; empty for what is no icon.
std::vector<std::uint32_t> pictureOf(HICON icon) {
    ICONINFO info{};
    if (GetIconInfo(icon, &info) == FALSE) {
        return {};
    }
    const Panelix::UniqueBitmap colour{info.hbmColor};
    const Panelix::UniqueBitmap mask{info.hbmMask};
    BITMAP facts{};
    GetObjectW(colour.get(), sizeof(facts), &facts);
    BITMAPINFO header{};
    header.bmiHeader.biSize = sizeof(header.bmiHeader);
    header.bmiHeader.biWidth = facts.bmWidth;
    header.bmiHeader.biHeight = -facts.bmHeight;
    header.bmiHeader.biPlanes = 1;
    header.bmiHeader.biBitCount = 32;
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(facts.bmWidth) *
                                      static_cast<std::size_t>(facts.bmHeight));
    const Panelix::UniqueDc dc{CreateCompatibleDC(nullptr)};
    GetDIBits(
        dc.get(), colour.get(), 0, static_cast<UINT>(facts.bmHeight), pixels.data(), &header, DIB_RGB_COLORS);
    return pixels;
}

/// A shell that keeps what it is asked, obeys or not as the test wants, and sees the pictures while they are
/// there. Nothing reaches the real one.
class WatchedShell : public testing::Test {
protected:
    struct Request {
        DWORD message;
        NOTIFYICONDATAW record;
        std::vector<std::uint32_t> picture;
    };

    WatchedShell() { current = this; }
    ~WatchedShell() override { current = nullptr; }

    std::vector<DWORD> messages() const {
        std::vector<DWORD> all;
        for (const Request& request : requests) {
            all.push_back(request.message);
        }
        return all;
    }

    bool add() { return icon.add(GetModuleHandleW(nullptr), kIcon, window.get(), L"tip"); }

    const IconWindow window;
    Panelix::TrayIcon icon;
    std::vector<Request> requests;
    bool obeys = true;
    std::function<void()> onRequest;

private:
    static BOOL WINAPI obey(DWORD message, NOTIFYICONDATAW* record) {
        current->requests.push_back({message, *record, pictureOf(record->hIcon)});
        if (current->onRequest) {
            current->onRequest();
        }
        return current->obeys ? TRUE : FALSE;
    }

    inline static WatchedShell* current = nullptr;

    ImportOverride override_{"SHELL32.dll", "Shell_NotifyIconW", obey};
};

TEST_F(WatchedShell, IsHandedTheWholeRecordWithThePictureOfTheSmallSize) {
    EXPECT_TRUE(add());
    ASSERT_THAT(messages(), ElementsAre(DWORD{NIM_ADD}));
    const NOTIFYICONDATAW& record = requests.front().record;
    EXPECT_EQ(record.cbSize, 976U);
    EXPECT_EQ(record.hWnd, window.get());
    EXPECT_EQ(record.uID, 1U);
    EXPECT_EQ(record.uFlags, UINT{NIF_MESSAGE | NIF_ICON | NIF_TIP});
    EXPECT_EQ(record.uCallbackMessage, UINT{WM_APP});
    EXPECT_STREQ(record.szTip, L"tip");

    const int width = GetSystemMetrics(SM_CXSMICON);
    const int height = GetSystemMetrics(SM_CYSMICON);
    const Panelix::UniqueIcon small{
        static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), kIcon, IMAGE_ICON, width, height, 0))};
    const Panelix::UniqueIcon large{
        static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), kIcon, IMAGE_ICON, 0, 0, LR_DEFAULTSIZE))};
    const auto expected = pictureOf(small.get());
    ASSERT_EQ(expected.size(), static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    ASSERT_NE(pictureOf(large.get()), expected);
    EXPECT_TRUE(requests.front().picture == expected);
}

TEST_F(WatchedShell, SeesTheSamePictureInEveryRequestAndEachIsGivenBackAfterIt) {
    const ImportRecorder<&LoadImageW> loaded("USER32.dll", "LoadImageW");
    const ImportRecorder<&DestroyIcon> destroyed("USER32.dll", "DestroyIcon");
    onRequest = [&] { EXPECT_EQ(destroyed.count() + 1, loaded.count()); };
    add();
    icon.restore();
    obeys = false;
    icon.restore();
    icon.tryAgain();
    icon.tryAgain();
    std::vector<HANDLE> given;
    for (const HICON picture : destroyed.arguments()) {
        given.push_back(picture);
    }
    EXPECT_EQ(given, loaded.results());
    EXPECT_EQ(loaded.count(), 5U);
    ASSERT_EQ(requests.size(), 5U);
    for (const Request& request : requests) {
        EXPECT_FALSE(request.picture.empty());
        EXPECT_TRUE(request.picture == requests.front().picture);
        EXPECT_EQ(request.record.uFlags, 7U);
        EXPECT_STREQ(request.record.szTip, L"tip");
    }
}

TEST_F(WatchedShell, ThatDoesNotObeyIsAskedOncePerCallToAddAndToChangeByTurns) {
    obeys = false;
    EXPECT_FALSE(add());
    for (int i = 0; i < 4; ++i) {
        EXPECT_FALSE(icon.tryAgain());
    }
    EXPECT_THAT(messages(), ElementsAre(NIM_ADD, NIM_MODIFY, NIM_ADD, NIM_MODIFY, NIM_ADD));
}

TEST_F(WatchedShell, ThatObeyedLaterThanItAnsweredIsFoundOutByTheChange) {
    obeys = false;
    EXPECT_FALSE(add());
    // The icon is there: a change succeeds, and adding it would fail.
    obeys = true;
    EXPECT_TRUE(icon.tryAgain());
    EXPECT_THAT(messages(), ElementsAre(NIM_ADD, NIM_MODIFY));
}

TEST_F(WatchedShell, ThatWasStartedAnewIsAskedToAddFirst) {
    obeys = false;
    add();
    EXPECT_FALSE(icon.restore());
    EXPECT_FALSE(icon.tryAgain());
    EXPECT_FALSE(icon.restore());
    obeys = true;
    EXPECT_TRUE(icon.restore());
    EXPECT_THAT(messages(), ElementsAre(NIM_ADD, NIM_ADD, NIM_MODIFY, NIM_ADD, NIM_ADD));
}

TEST_F(WatchedShell, IsNotAskedForAnIconThatWasRemovedUntilItIsAddedAnew) {
    obeys = false;
    add();
    icon.remove();
    ASSERT_THAT(messages(), ElementsAre(NIM_ADD, NIM_DELETE));
    EXPECT_EQ(requests.back().record.uFlags, 0U);
    EXPECT_EQ(requests.back().record.uID, 1U);
    EXPECT_EQ(requests.back().record.hWnd, window.get());
    EXPECT_TRUE(icon.tryAgain());
    EXPECT_TRUE(icon.restore());
    EXPECT_EQ(requests.size(), 2U);
    add();
    ASSERT_EQ(requests.size(), 3U);
    EXPECT_EQ(requests.back().message, DWORD{NIM_ADD});
    EXPECT_EQ(requests.back().record.uFlags, 7U);
}

TEST_F(WatchedShell, MayLetTheRemovalInWhileItIsWaitedFor) {
    obeys = false;
    add();
    onRequest = [this] {
        onRequest = nullptr;
        icon.remove();
    };
    EXPECT_TRUE(icon.tryAgain()) << "nothing is left to try";
    EXPECT_THAT(messages(), ElementsAre(NIM_ADD, NIM_MODIFY, NIM_DELETE));
}

/// What the shell's library says about its version, when it says anything.
std::optional<DWORD> shellMajorVersion;

HRESULT CALLBACK tellVersion(DLLVERSIONINFO* info) {
    EXPECT_EQ(info->cbSize, 20U);
    info->dwMajorVersion = *shellMajorVersion;
    return S_OK;
}

HRESULT CALLBACK refuseVersion(DLLVERSIONINFO* info) {
    info->dwMajorVersion = 6;
    return E_FAIL;
}

TEST_F(WatchedShell, GetsARecordOfTheSizeThatItsVersionKnows) {
    ImportRecorder<&LoadLibraryExW> loaded("KERNEL32.dll", "LoadLibraryExW");
    const ImportRecorder<&FreeLibrary> freed("KERNEL32.dll", "FreeLibrary");
    ImportRecorder<&GetProcAddress> lookedUp("KERNEL32.dll", "GetProcAddress");
    const auto recordBytes = [this] {
        add();
        return requests.back().record.cbSize;
    };
    EXPECT_EQ(recordBytes(), 976U);
    lookedUp.failWith(reinterpret_cast<FARPROC>(reinterpret_cast<void*>(tellVersion)));
    for (const DWORD major : {5U, 6U, 10U}) {
        shellMajorVersion = major;
        EXPECT_EQ(recordBytes(), 976U) << major;
    }
    shellMajorVersion = 4;
    EXPECT_EQ(recordBytes(), 952U);
    lookedUp.failWith(reinterpret_cast<FARPROC>(reinterpret_cast<void*>(refuseVersion)));
    EXPECT_EQ(recordBytes(), 952U);
    lookedUp.failWith(nullptr);
    EXPECT_EQ(recordBytes(), 952U);
    EXPECT_EQ(loaded.count(), 7U);
    // From the system folder, and given back each time.
    EXPECT_THAT(loaded.arguments<2>(), Each(DWORD{LOAD_LIBRARY_SEARCH_SYSTEM32}));
    EXPECT_EQ(freed.arguments(), loaded.results());
    lookedUp.goThroughAgain();
    loaded.failWith(nullptr);
    EXPECT_EQ(recordBytes(), 952U);
    EXPECT_EQ(freed.count(), 7U);
}

}  // namespace
