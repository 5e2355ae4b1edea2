#include "tests/support/image_compare.h"

#include <cstring>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

constexpr int kFrameWidth = 320;
constexpr int kFrameHeight = 240;
constexpr const wchar_t* kFolder = L"differing_pictures";

/// GDI+'s own PNG encoder.
constexpr CLSID kPngEncoder{0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

std::size_t pixelCount(int width, int height) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

std::wstring runningTest() {
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    const std::string name = std::string(test->test_suite_name()) + "." + test->name();
    std::wstring wide;
    for (const char letter : name) {
        wide += letter == '/' ? L'_' : static_cast<wchar_t>(letter);
    }
    return wide;
}

std::string narrow(const std::wstring& text) {
    return std::string(text.begin(), text.end());
}

/// The file's name.
std::wstring save(const Picture& picture, const wchar_t* role) {
    static int number = 0;
    CreateDirectoryW(kFolder, nullptr);
    const std::wstring path = std::wstring(kFolder) + L"\\" + runningTest() + L"-" +
                              std::to_wstring(++number) + L"-" + role + L".png";
    // GDI+ only reads through the pointer: nothing draws on this bitmap.
    auto* pixels = const_cast<std::uint32_t*>(picture.pixels.data());
    Gdiplus::Bitmap bitmap(picture.width,
                           picture.height,
                           picture.width * static_cast<int>(sizeof(std::uint32_t)),
                           PixelFormat32bppPARGB,
                           reinterpret_cast<BYTE*>(pixels));
    if (bitmap.Save(path.c_str(), &kPngEncoder, nullptr) != Gdiplus::Ok) {
        return L"(not saved: " + path + L")";
    }
    return path;
}

std::string hex(std::uint32_t pixel) {
    std::ostringstream text;
    text << std::hex << std::setw(8) << std::setfill('0') << pixel;
    return text.str();
}

}  // namespace

std::uint32_t Picture::at(int x, int y) const {
    if (x < 0 || x >= width || y < 0 || y >= height) {
        throw std::out_of_range("pixel outside the picture");
    }
    return pixels[pixelCount(width, y) + static_cast<std::size_t>(x)];
}

Picture plainPicture(int width, int height, std::uint32_t argb) {
    return {width, height, std::vector<std::uint32_t>(pixelCount(width, height), argb)};
}

Picture readPicture(Gdiplus::Bitmap& bitmap) {
    const int width = static_cast<int>(bitmap.GetWidth());
    const int height = static_cast<int>(bitmap.GetHeight());
    Picture picture = plainPicture(width, height, 0);
    Gdiplus::BitmapData data{};
    data.Width = static_cast<UINT>(width);
    data.Height = static_cast<UINT>(height);
    data.Stride = width * static_cast<int>(sizeof(std::uint32_t));
    data.PixelFormat = PixelFormat32bppPARGB;
    data.Scan0 = picture.pixels.data();
    const Gdiplus::Rect whole(0, 0, width, height);
    const Gdiplus::Status status =
        bitmap.LockBits(&whole,
                        Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeUserInputBuf,
                        PixelFormat32bppPARGB,
                        &data);
    EXPECT_EQ(status, Gdiplus::Ok);
    if (status != Gdiplus::Ok) {
        return {};
    }
    bitmap.UnlockBits(&data);
    return picture;
}

Picture readFrame(const std::uint8_t* frame) {
    Picture picture = plainPicture(kFrameWidth, kFrameHeight, 0);
    std::memcpy(picture.pixels.data(), frame, picture.pixels.size() * sizeof(std::uint32_t));
    return picture;
}

std::size_t countDifferences(const Picture& first, const Picture& second) {
    if (first.width != second.width || first.height != second.height) {
        throw std::invalid_argument("pictures of different sizes");
    }
    std::size_t count = 0;
    for (std::size_t index = 0; index < first.pixels.size(); ++index) {
        count += first.pixels[index] != second.pixels[index] ? 1U : 0U;
    }
    return count;
}

testing::AssertionResult samePicture(const Picture& actual, const Picture& expected) {
    if (actual == expected) {
        return testing::AssertionSuccess();
    }
    if (actual.width != expected.width || actual.height != expected.height) {
        return testing::AssertionFailure() << "the picture is " << actual.width << " x " << actual.height
                                           << ", expected " << expected.width << " x " << expected.height;
    }
    std::size_t first = 0;
    while (actual.pixels[first] == expected.pixels[first]) {
        ++first;
    }
    const auto width = static_cast<std::size_t>(actual.width);
    return testing::AssertionFailure()
           << countDifferences(actual, expected) << " pixels differ, the first one at (" << first % width
           << ", " << first / width << "): " << hex(actual.pixels[first]) << ", expected "
           << hex(expected.pixels[first]) << "; see " << narrow(save(actual, L"actual")) << " and "
           << narrow(save(expected, L"expected"));
}
