#include "framework/drawing/screenshot.h"

#include <windows.h>

#include <gdiplus.h>
#include <shlobj.h>

#include <array>
#include <cstddef>
#include <cwchar>
#include <memory>
#include <new>

#include "framework/core/local_time.h"
#include "framework/drawing/screenshot_name.h"

namespace Panelix {

std::wstring screenshotTimeText() {
    return screenshotTimeText(localTime());
}

int findEncoderClsid(const wchar_t* mimeType, CLSID* clsid) noexcept {
    UINT count = 0;
    UINT bytes = 0;
    // Failing leaves both at 0.
    Gdiplus::GetImageEncodersSize(&count, &bytes);
    if (bytes == 0) {
        return -1;
    }
    // The descriptions' texts follow the array in the same block, so it is larger than `count` entries.
    const std::unique_ptr<std::byte[]> block(new (std::nothrow) std::byte[bytes]);
    if (block == nullptr) {
        return -1;
    }
    auto* encoders = reinterpret_cast<Gdiplus::ImageCodecInfo*>(block.get());
    if (Gdiplus::GetImageEncoders(count, bytes, encoders) != Gdiplus::Ok) {
        return -1;
    }
    for (UINT index = 0; index < count; ++index) {
        if (std::wcscmp(encoders[index].MimeType, mimeType) == 0) {
            *clsid = encoders[index].Clsid;
            return static_cast<int>(index);
        }
    }
    return -1;
}

std::wstring screenshotPath() {
    std::array<wchar_t, MAX_PATH> folder{};
    if (SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT, folder.data()) != S_OK) {
        return {};
    }
    return std::wstring(folder.data()) + L"\\kelvaro shot " + screenshotTimeText() + L".bmp";
}

}  // namespace Panelix
