#include "framework/drawing/screenshot.h"

#include <windows.h>

#include <gdiplus.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "framework/drawing/canvas.h"
#include "framework/drawing/screenshot_name.h"
#include "tests/framework/drawing/drawing_fixture.h"
#include "tests/support/documents_folder.h"
#include "tests/support/gdiplus_ledger.h"
#include "tests/support/import_override.h"
#include "tests/support/message_box_watcher.h"
#include "tests/support/only_wine.h"
#include "tests/support/registry_override.h"
#include "tests/support/system_local_time.h"
#include "tests/support/temporary_folder.h"

using Panelix::Canvas;
using Panelix::findEncoderClsid;
using Panelix::kLcdHeight;
using Panelix::kLcdWidth;
using Panelix::screenshotTimeText;
using Panelix::TransitionKind;

namespace {

constexpr CLSID kUntouched{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
constexpr CLSID kBmpEncoder{0x557CF400, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

CLSID savedWith{};
Gdiplus::EncoderParameters savedParameters{};
ULONG savedCompression = 0;

Gdiplus::GpStatus WINGDIPAPI noteSave(Gdiplus::GpImage*,
                                      const WCHAR*,
                                      const CLSID* encoder,
                                      const Gdiplus::EncoderParameters* parameters) {
    savedWith = *encoder;
    savedParameters = *parameters;
    savedCompression = *static_cast<const ULONG*>(parameters->Parameter[0].Value);
    return Gdiplus::Ok;
}

using GetEncoders = Gdiplus::GpStatus WINGDIPAPI(UINT count, UINT bytes, Gdiplus::ImageCodecInfo* encoders);
GetEncoders* gdiplusEncoders = nullptr;

/// Fails after it has given all encoders.
Gdiplus::GpStatus WINGDIPAPI giveEncodersAndFail(UINT count, UINT bytes, Gdiplus::ImageCodecInfo* encoders) {
    EXPECT_EQ(gdiplusEncoders(count, bytes, encoders), Gdiplus::Ok);
    return Gdiplus::GenericError;
}

/// Seconds that a test may last: a shot of it has one of so many names.
constexpr unsigned kSecondsOfATest = 10;

/// The user's Documents folder is a folder of the test's own.
class Screenshot : public DrawingTest {
protected:
    void SetUp() override {
        setDocumentsFolder(folder_.path());
        SKIP_ON_WINDOWS_UNLESS(documentsFolderIs(folder_.path()), kDocumentsAreTheUsers);
    }

    void compose(Screen& page) {
        canvas_.composePages(&page.bitmap, nullptr, 0.0F, TransitionKind::SlideFromBottom);
    }

    Picture pictureIn(const std::wstring& file) const {
        Gdiplus::Bitmap bitmap((folder_.path() + L"\\" + file).c_str());
        return readPicture(bitmap);
    }

    /// One shot that fails, and a canvas that goes on.
    void expectOneErrorBox() {
        paintSomething();
        EXPECT_TRUE(canvas_.saveScreenshot()) << "a box was shown";
        const std::vector<SeenMessageBox> boxes = watcher_.boxes();
        ASSERT_EQ(boxes.size(), 1U);
        EXPECT_EQ(boxes[0].caption, L"Error saving screenshot!");
        EXPECT_EQ(boxes[0].icon, MessageBoxIcon::Error);
        EXPECT_TRUE(samePicture(frameOf(canvas_), page_.picture()));
    }

    void paintSomething() {
        page_.fill(0xFF102030);
        compose(page_);
    }

    static std::size_t filesIn(const std::wstring& folder) {
        const std::filesystem::directory_iterator files(L"\\\\?\\" + folder);
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

    RegistryOverride registry_;
    TemporaryFolder folder_;
    MessageBoxWatcher watcher_;
    Canvas canvas_;
    Screen page_;
};

void paintPattern(Screen& page) {
    page.fill(0xFF000000);
    for (int y = 0; y < kLcdHeight; ++y) {
        for (int x = 0; x < kLcdWidth; ++x) {
            page.bitmap.SetPixel(
                x, y, Gdiplus::Color(static_cast<BYTE>(x), static_cast<BYTE>(y), static_cast<BYTE>(x * y)));
        }
    }
}

std::wstring fileName(const std::wstring& timeText) {
    return L"kelvaro shot " + timeText + L".bmp";
}

}  // namespace

TEST_F(Screenshot, FileInDocumentsHoldsTheComposedCanvas) {
    paintPattern(page_);
    compose(page_);
    const Picture composed = page_.picture();
    // What a page draws after the composition is not in the picture.
    page_.fill(0xFFFFFFFF);

    const std::wstring before = screenshotTimeText();
    EXPECT_FALSE(canvas_.saveScreenshot()) << "no box was shown";
    const std::wstring after = screenshotTimeText();

    const std::vector<std::wstring> files = folder_.files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_TRUE(files[0] == fileName(before) || files[0] == fileName(after))
        << std::string(files[0].begin(), files[0].end());
    EXPECT_TRUE(samePicture(pictureIn(files[0]), composed));
    EXPECT_TRUE(watcher_.boxes().empty());
}

TEST_F(Screenshot, FileIsABmp) {
    page_.fill(0xFF102030);
    compose(page_);
    canvas_.saveScreenshot();
    ASSERT_EQ(folder_.files().size(), 1U);
    Gdiplus::Bitmap saved((folder_.path() + L"\\" + folder_.files()[0]).c_str());
    GUID format{};
    ASSERT_EQ(saved.GetRawFormat(&format), Gdiplus::Ok);
    EXPECT_TRUE(IsEqualGUID(format, Gdiplus::ImageFormatBMP));
}

TEST_F(Screenshot, TwoShotsInOneSecondLeaveTheSecond) {
    Screen second;
    page_.fill(0xFF0000FF);
    second.fill(0xFF00FF00);
    std::wstring start;
    std::wstring end;
    // A shot takes milliseconds, so one of a few rounds lies within one second.
    for (int round = 0; round < 20 && (start.empty() || start != end); ++round) {
        start = screenshotTimeText();
        compose(page_);
        canvas_.saveScreenshot();
        compose(second);
        canvas_.saveScreenshot();
        end = screenshotTimeText();
    }
    ASSERT_EQ(start, end);
    EXPECT_TRUE(samePicture(pictureIn(fileName(start)), plainPicture(kLcdWidth, kLcdHeight, 0xFF00FF00)));
    EXPECT_TRUE(watcher_.boxes().empty());
}

TEST_F(Screenshot, NameOfTheDocumentsFolderMayHaveAnyCharacter) {
    // Of no ANSI code page.
    const std::wstring documents = folder_.path() + L"\\\u0414\u043E\u043A \u65E5\u672C \U0001F4F7";
    ASSERT_TRUE(CreateDirectoryW(documents.c_str(), nullptr));
    setDocumentsFolder(documents);
    compose(page_);
    canvas_.saveScreenshot();
    EXPECT_TRUE(watcher_.boxes().empty());
    std::size_t shots = 0;
    for (const auto& entry : std::filesystem::directory_iterator(documents)) {
        shots += entry.path().extension() == L".bmp" ? 1U : 0U;
    }
    EXPECT_EQ(shots, 1U);
    std::filesystem::remove_all(documents);
}

TEST_F(Screenshot, MissingDocumentsFolderIsReported) {
    setDocumentsFolder(L"Q:\\nowhere");
    EXPECT_TRUE(canvas_.saveScreenshot()) << "a box was shown";
    const std::vector<SeenMessageBox> boxes = watcher_.boxes();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_EQ(boxes[0].text, L"There was an error fetching your user documents folder!");
    EXPECT_EQ(boxes[0].caption, L"Error!");
    EXPECT_EQ(boxes[0].icon, MessageBoxIcon::Error);
    EXPECT_EQ(boxes[0].owner, nullptr);
    EXPECT_TRUE(folder_.files().empty());
}

TEST_F(Screenshot, ReadOnlyFolderIsReportedAndTheCanvasStaysUsable) {
    SKIP_ON_WINDOWS("an administrator may write everywhere");
    // The kernel's own files: a folder that exists and takes none of ours.
    setDocumentsFolder(L"Z:\\proc");
    paintPattern(page_);
    compose(page_);
    EXPECT_TRUE(canvas_.saveScreenshot()) << "a box was shown";
    const std::vector<SeenMessageBox> boxes = watcher_.boxes();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_EQ(boxes[0].caption, L"Error saving screenshot!");
    EXPECT_EQ(boxes[0].icon, MessageBoxIcon::Error);
    EXPECT_EQ(boxes[0].owner, nullptr);
    EXPECT_EQ(boxes[0].text, Canvas::statusText(Gdiplus::GenericError));

    EXPECT_TRUE(samePicture(frameOf(canvas_), page_.picture()));
    setDocumentsFolder(folder_.path());
    EXPECT_FALSE(canvas_.saveScreenshot()) << "no box was shown";
    EXPECT_EQ(folder_.files().size(), 1U);
    EXPECT_EQ(watcher_.boxes().size(), 1U);
}

TEST_F(Screenshot, ANameTakenByAFolderIsReported) {
    for (unsigned second = 0; second < kSecondsOfATest; ++second) {
        const std::wstring name = fileName(screenshotTimeText(systemLocalTime(second)));
        ASSERT_TRUE(std::filesystem::create_directory(std::filesystem::path(folder_.path()) / name));
    }
    expectOneErrorBox();
    for (const auto& taken : std::filesystem::directory_iterator(folder_.path())) {
        std::filesystem::remove(taken);
    }
    canvas_.saveScreenshot();
    EXPECT_EQ(folder_.files().size(), 1U) << "the next one is saved";
}

BOOL WINAPI writeToAFullDisk(HANDLE, const void*, DWORD, DWORD* written, OVERLAPPED*) {
    if (written != nullptr) {
        *written = 0;
    }
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(Screenshot, ADiskThatIsFullIsReportedAndTheNextOneIsSavedWhenThereIsRoom) {
    SKIP_ON_WINDOWS("GDI+ writes its files through another library there");
    // The library that writes files for GDI+ is loaded by the first one.
    paintSomething();
    canvas_.saveScreenshot();
    {
        const ImportOverride full("kernel32.dll", "WriteFile", writeToAFullDisk, L"shcore.dll");
        expectOneErrorBox();
    }
    canvas_.saveScreenshot();
    EXPECT_TRUE(
        samePicture(pictureIn(folder_.files().back()), plainPicture(kLcdWidth, kLcdHeight, 0xFF102030)));
    EXPECT_EQ(watcher_.boxes().size(), 1U) << "only the one of the full disk";
}

// What is longer than the system takes is refused; under Wine, which takes it, it is saved.
TEST_F(Screenshot, ADocumentsFolderOfTheLongestNameIsReportedOrTaken) {
    std::wstring documents = folder_.path() + L"\\";
    documents.append(250 - documents.size(), L'd');
    ASSERT_TRUE(CreateDirectoryW((L"\\\\?\\" + documents).c_str(), nullptr));
    setDocumentsFolder(documents);
    canvas_.saveScreenshot();
    const std::size_t saved = filesIn(documents);
    EXPECT_EQ(watcher_.boxes().size() + saved, 1U);
    std::filesystem::remove_all(L"\\\\?\\" + documents);
}

// The shell gives the usual folder of the profile for it, or none: the picture is not lost without a word.
TEST_F(Screenshot, BeyondTheLongestDocumentsPathIsSavedInTheUsualFolderOrReported) {
    setDocumentsFolder(folder_.path() + L"\\" + std::wstring(300, L'd'));
    const std::filesystem::path usual = std::filesystem::path(Panelix::screenshotPath()).parent_path();
    const auto files = [&usual] {
        std::set<std::filesystem::path> found;
        if (!usual.empty()) {
            found.insert(std::filesystem::directory_iterator(usual), {});
        }
        return found;
    };
    const auto before = files();
    canvas_.saveScreenshot();
    auto added = files();
    std::erase_if(added, [&before](const auto& file) { return before.contains(file); });
    EXPECT_EQ(watcher_.boxes().size() + added.size(), 1U);
    for (const std::filesystem::path& file : added) {
        std::filesystem::remove(file);
    }
}

TEST_F(Screenshot, AnExistingFileIsOverwritten) {
    page_.fill(0xFF123456);
    compose(page_);
    // Every name that the shot may get while this test runs.
    for (unsigned second = 0; second < 10; ++second) {
        const std::wstring name = fileName(screenshotTimeText(systemLocalTime(second)));
        std::ofstream(std::filesystem::path(folder_.path()) / name) << "else";
    }
    canvas_.saveScreenshot();
    EXPECT_EQ(folder_.files().size(), 10U);
    int pictures = 0;
    for (const std::wstring& file : folder_.files()) {
        Gdiplus::Bitmap bitmap((folder_.path() + L"\\" + file).c_str());
        pictures += bitmap.GetWidth() == kLcdWidth ? 1 : 0;
    }
    EXPECT_EQ(pictures, 1);
}

TEST_F(Screenshot, PathIsInDocuments) {
    const std::wstring path = Panelix::screenshotPath();
    EXPECT_EQ(path.find(folder_.path() + L"\\kelvaro shot 2"), 0U);
    EXPECT_EQ(path.substr(path.size() - 5), L"m.bmp");
}

TEST(ScreenshotTime, IsTheLocalTimeOfNow) {
    // The second may change between two readings of the clock, but not in every round.
    bool same = false;
    for (int round = 0; round < 10 && !same; ++round) {
        same = screenshotTimeText() == screenshotTimeText(systemLocalTime());
    }
    EXPECT_TRUE(same);
}

TEST_F(Screenshot, EncoderIsFoundByItsMimeType) {
    CLSID clsid = kUntouched;
    const int index = findEncoderClsid(L"image/bmp", &clsid);
    EXPECT_GE(index, 0);
    EXPECT_TRUE(IsEqualGUID(clsid, kBmpEncoder));

    CLSID other = kUntouched;
    const int otherIndex = findEncoderClsid(L"image/png", &other);
    EXPECT_GE(otherIndex, 0);
    EXPECT_NE(otherIndex, index);
    EXPECT_FALSE(IsEqualGUID(other, clsid));
}

TEST_F(Screenshot, EncodersThatCannotBeReadAreNone) {
    const ImportOverride encoders("gdiplus.dll", "GdipGetImageEncoders", giveEncodersAndFail);
    gdiplusEncoders = encoders.original<GetEncoders>();
    CLSID clsid = kUntouched;
    EXPECT_EQ(findEncoderClsid(L"image/bmp", &clsid), -1);
    EXPECT_TRUE(IsEqualGUID(clsid, kUntouched));
    // The size alone can be read, and the save then fails for want of an encoder.
    page_.fill(0xFF102030);
    compose(page_);
    canvas_.saveScreenshot();
    const std::vector<SeenMessageBox> boxes = watcher_.boxes();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_EQ(boxes[0].caption, L"Error saving screenshot!");
    EXPECT_EQ(boxes[0].text, Canvas::statusText(Gdiplus::UnknownImageFormat));
}

TEST_F(Screenshot, UnknownMimeTypeLeavesTheClassUntouched) {
    for (const wchar_t* type : {L"image/kelvaro", L"IMAGE/BMP", L"image/bm", L"image/bmpx", L""}) {
        CLSID clsid = kUntouched;
        EXPECT_EQ(findEncoderClsid(type, &clsid), -1);
        EXPECT_TRUE(IsEqualGUID(clsid, kUntouched));
    }
}

TEST_F(Screenshot, AsksTheBmpEncoderForRunLengths) {
    const ImportOverride save("gdiplus.dll", "GdipSaveImageToFile", noteSave);
    canvas_.saveScreenshot();
    EXPECT_TRUE(IsEqualGUID(savedWith, kBmpEncoder));
    EXPECT_EQ(savedParameters.Count, 1U);
    EXPECT_TRUE(IsEqualGUID(savedParameters.Parameter[0].Guid, Gdiplus::EncoderCompression));
    EXPECT_EQ(savedParameters.Parameter[0].NumberOfValues, 1U);
    EXPECT_EQ(savedParameters.Parameter[0].Type, 4U);
    EXPECT_EQ(savedCompression, 5U);
}

TEST_F(Screenshot, TakesNothingThatItWouldHaveToGiveBack) {
    const GdiplusLedger ledger;
    canvas_.saveScreenshot();
    EXPECT_EQ(folder_.files().size(), 1U);
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
}
