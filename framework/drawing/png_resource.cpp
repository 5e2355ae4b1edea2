#include "framework/drawing/image.h"

#include <windows.h>

#include <wincodec.h>
#include <wrl/client.h>

#include <climits>
#include <cstring>
#include <new>
#include <span>

#include "framework/core/unique_resource.h"
#include "framework/drawing/gdiplus_object.h"

namespace Panelix {

namespace {

using Microsoft::WRL::ComPtr;

constexpr UINT kBytesPerPixel = 4;

/// The bytes of the resource, which stay in place as long as the module; empty when there are none.
std::span<const std::byte> pngResource(std::uintptr_t resourceId) {
    const HRSRC found = FindResourceW(nullptr, reinterpret_cast<LPCWSTR>(resourceId), L"PNG");
    if (found == nullptr) {
        return {};
    }
    const DWORD size = SizeofResource(nullptr, found);
    const HGLOBAL loaded = LoadResource(nullptr, found);
    const void* bytes = loaded != nullptr ? LockResource(loaded) : nullptr;
    if (bytes == nullptr) {
        return {};
    }
    return {static_cast<const std::byte*>(bytes), size};
}

/// A stream over a copy of `bytes`, or null.
ComPtr<IStream> streamOver(std::span<const std::byte> bytes) {
    UniqueGlobal block(GlobalAlloc(GMEM_MOVEABLE, bytes.size()));
    void* locked = block ? GlobalLock(block.get()) : nullptr;
    if (locked == nullptr) {
        return nullptr;
    }
    std::memcpy(locked, bytes.data(), bytes.size());
    GlobalUnlock(block.get());

    ComPtr<IStream> stream;
    if (FAILED(CreateStreamOnHGlobal(block.get(), TRUE, &stream))) {
        return nullptr;
    }
    // The stream frees the block.
    static_cast<void>(block.release());
    return stream;
}

/// The only frame of the PNG in `stream` as premultiplied BGRA, or null.
ComPtr<IWICBitmapSource> decodeOnlyFrame(IStream* stream) {
    ComPtr<IWICBitmapDecoder> decoder;
    UINT frameCount = 0;
    ComPtr<IWICBitmapFrameDecode> frame;
    ComPtr<IWICBitmapSource> converted;
    if (FAILED(
            CoCreateInstance(CLSID_WICPngDecoder2, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&decoder))) ||
        FAILED(decoder->Initialize(stream, WICDecodeMetadataCacheOnLoad)) ||
        FAILED(decoder->GetFrameCount(&frameCount)) || frameCount != 1 ||
        FAILED(decoder->GetFrame(0, &frame)) ||
        FAILED(WICConvertBitmapSource(GUID_WICPixelFormat32bppPBGRA, frame.Get(), &converted))) {
        return nullptr;
    }
    return converted;
}

/// GDI+ over a copy of the pixels. WIC's premultiplied BGRA and GDI+'s premultiplied ARGB are the same bytes
/// in memory.
Image imageFrom(IWICBitmapSource& source) {
    UINT width = 0;
    UINT height = 0;
    if (FAILED(source.GetSize(&width, &height)) || width == 0 || height == 0) {
        return {};
    }
    // The header of a damaged file may claim any size; GDI+ takes int.
    if (width > INT_MAX / kBytesPerPixel || height > INT_MAX / (width * kBytesPerPixel)) {
        return {};
    }
    const UINT stride = width * kBytesPerPixel;
    const UINT bytes = stride * height;
    Image image;
    image.pixels.reset(new (std::nothrow) std::byte[bytes]);
    auto* pixels = reinterpret_cast<BYTE*>(image.pixels.get());
    if (pixels == nullptr || FAILED(source.CopyPixels(nullptr, stride, bytes, pixels))) {
        return {};
    }
    image.bitmap = makeGdiplusObject<Gdiplus::Bitmap>(static_cast<INT>(width),
                                                      static_cast<INT>(height),
                                                      static_cast<INT>(stride),
                                                      PixelFormat32bppPARGB,
                                                      pixels);
    return image;
}

}  // namespace

Image decodePngResource(std::uintptr_t resourceId) {
    const std::span<const std::byte> bytes = pngResource(resourceId);
    if (bytes.empty()) {
        return {};
    }
    const ComPtr<IStream> stream = streamOver(bytes);
    const ComPtr<IWICBitmapSource> frame = stream != nullptr ? decodeOnlyFrame(stream.Get()) : nullptr;
    if (frame == nullptr) {
        return {};
    }
    return imageFrom(*frame.Get());
}

}  // namespace Panelix
