#include "tests/pages/frame_dump.h"

#include <gtest/gtest.h>

#include <array>

namespace {

constexpr CLSID kPngEncoder = {0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

}  // namespace

void dumpFrame(Gdiplus::Bitmap& page, const std::string& name) {
    static int number = 0;
    std::array<wchar_t, MAX_PATH> folder{};
    if (GetEnvironmentVariableW(L"KELVARO_FRAMES_FOLDER", folder.data(), MAX_PATH) == 0) {
        return;
    }
    ++number;
    const std::wstring path = folder.data() + std::wstring(number < 10 ? L"\\0" : L"\\") +
                              std::to_wstring(number) + L" " + std::wstring(name.begin(), name.end()) +
                              L".png";
    EXPECT_EQ(page.Save(path.c_str(), &kPngEncoder, nullptr), Gdiplus::Ok);
}
