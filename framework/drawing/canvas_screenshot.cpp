#include "framework/drawing/canvas.h"

#include <new>

#include "framework/drawing/screenshot.h"
#include "framework/drawing/status_text.h"

namespace Panelix {

namespace {

void showSaveError(Gdiplus::Status status) noexcept {
    MessageBoxW(nullptr, gdiplusStatusText(status), L"Error saving screenshot!", MB_ICONHAND);
}

}  // namespace

bool Canvas::saveScreenshot() noexcept {
    try {
        const std::wstring path = screenshotPath();
        if (path.empty()) {
            MessageBoxW(
                nullptr, L"There was an error fetching your user documents folder!", L"Error!", MB_ICONHAND);
            return true;
        }
        ULONG compression = Gdiplus::EncoderValueCompressionRle;
        Gdiplus::EncoderParameters parameters{};
        parameters.Count = 1;
        parameters.Parameter[0].Guid = Gdiplus::EncoderCompression;
        parameters.Parameter[0].NumberOfValues = 1;
        parameters.Parameter[0].Type = Gdiplus::EncoderParameterValueTypeLong;
        parameters.Parameter[0].Value = &compression;
        // Without such an encoder the save fails and says so.
        CLSID encoder{};
        findEncoderClsid(L"image/bmp", &encoder);
        const Gdiplus::Status status = surface_.Save(path.c_str(), &encoder, &parameters);
        if (status == Gdiplus::Ok) {
            return false;
        }
        showSaveError(status);
    } catch (const std::bad_alloc&) {
        showSaveError(Gdiplus::OutOfMemory);
    }
    return true;
}

}  // namespace Panelix
