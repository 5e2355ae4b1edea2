#include "framework/drawing/image.h"

#include <windows.h>

#include <wincodec.h>
#include <wrl/client.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "tests/framework/drawing/drawing_fixture.h"
#include "tests/framework/drawing/test_resources.h"
#include "tests/support/gdiplus_ledger.h"
#include "tests/support/import_override.h"

using Panelix::decodePngResource;
using Panelix::Image;

namespace {

class PngResource : public DrawingTest {};

/// References that others hold on an object of which the caller gives up its own.
ULONG referencesAfter(Microsoft::WRL::ComPtr<IUnknown>& kept) {
    IUnknown* const object = kept.Detach();
    return object != nullptr ? object->Release() : 0;
}

#pragma GCC diagnostic push
// COM interfaces have no virtual destructor; nobody deletes through one.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Takes the place of the PNG decoder's class in this process, for as long as it lives: gives out the
/// system's GIF decoder, which unlike the PNG one reports several frames, or no decoder at all.
class ReplacedPngDecoder final : public IClassFactory {
public:
    enum class With { GifDecoder, Nothing };

    explicit ReplacedPngDecoder(With replacement) : replacement_(replacement) {
        EXPECT_EQ(CoRegisterClassObject(
                      CLSID_WICPngDecoder2, this, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration_),
                  S_OK);
    }
    ReplacedPngDecoder(const ReplacedPngDecoder&) = delete;
    ReplacedPngDecoder& operator=(const ReplacedPngDecoder&) = delete;
    ~ReplacedPngDecoder() { CoRevokeClassObject(registration_); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
        if (id == IID_IUnknown || id == IID_IClassFactory) {
            *object = this;
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    // The test owns the object.
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 2; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** object) noexcept override {
        ++requests;
        *object = nullptr;
        return replacement_ == With::Nothing
                   ? E_OUTOFMEMORY
                   : CoCreateInstance(CLSID_WICGifDecoder, nullptr, CLSCTX_INPROC_SERVER, id, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) noexcept override { return S_OK; }

    int requests = 0;

private:
    With replacement_;
    DWORD registration_ = 0;
};

/// A picture whose size can be read, but not its pixels.
class UnreadablePicture final : public IWICBitmapSource {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) noexcept override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    // The test owns the object.
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return --references; }
    HRESULT STDMETHODCALLTYPE GetSize(UINT* width, UINT* height) noexcept override {
        *width = 4;
        *height = 3;
        return sizeResult;
    }
    HRESULT STDMETHODCALLTYPE GetPixelFormat(WICPixelFormatGUID*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetResolution(double*, double*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyPalette(IWICPalette*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyPixels(const WICRect*, UINT, UINT, BYTE*) noexcept override {
        return E_FAIL;
    }

    HRESULT sizeResult = S_OK;
    ULONG references = 0;
};

#pragma GCC diagnostic pop

/// What the calls of a decoding were given and gave, each with a reference of the test's own, and which of
/// them fail.
struct Decoding {
    Microsoft::WRL::ComPtr<IUnknown> stream;
    Microsoft::WRL::ComPtr<IUnknown> decoder;
    Microsoft::WRL::ComPtr<IUnknown> frame;
    Microsoft::WRL::ComPtr<IUnknown> converted;
    BOOL streamFreesItsBlock = FALSE;
    int blocksTaken = 0;
    int blocksFreed = 0;
    bool failStream = false;
    bool failConversion = false;
    /// Takes the converted picture's place.
    UnreadablePicture* unreadable = nullptr;
};

Decoding* decoding = nullptr;

decltype(CreateStreamOnHGlobal)* createStream = nullptr;
decltype(CoCreateInstance)* createInstance = nullptr;
decltype(WICConvertBitmapSource)* convert = nullptr;
decltype(GlobalAlloc)* allocateBlock = nullptr;
decltype(GlobalFree)* freeBlock = nullptr;

HGLOBAL WINAPI countAlloc(UINT flags, SIZE_T bytes) {
    ++decoding->blocksTaken;
    return allocateBlock(flags, bytes);
}

HGLOBAL WINAPI countFree(HGLOBAL block) {
    ++decoding->blocksFreed;
    return freeBlock(block);
}

HRESULT WINAPI noteStream(HGLOBAL block, BOOL frees, LPSTREAM* stream) {
    if (decoding->failStream) {
        return E_OUTOFMEMORY;
    }
    decoding->streamFreesItsBlock = frees;
    const HRESULT result = createStream(block, frees, stream);
    decoding->stream = *stream;
    return result;
}

HRESULT WINAPI noteInstance(REFCLSID id, LPUNKNOWN outer, DWORD context, REFIID iid, LPVOID* object) {
    const HRESULT result = createInstance(id, outer, context, iid, object);
    if (SUCCEEDED(result)) {
        decoding->decoder = static_cast<IUnknown*>(*object);
    }
    return result;
}

HRESULT WINAPI noteConversion(REFWICPixelFormatGUID format, IWICBitmapSource* source, IWICBitmapSource** to) {
    decoding->frame = source;
    if (decoding->failConversion) {
        *to = nullptr;
        return E_OUTOFMEMORY;
    }
    if (decoding->unreadable != nullptr) {
        decoding->unreadable->AddRef();
        *to = decoding->unreadable;
        return S_OK;
    }
    const HRESULT result = convert(format, source, to);
    decoding->converted = *to;
    return result;
}

/// Decodes the picture of twelve pixels under observation.
class PngDecoding : public DrawingTest {
protected:
    PngDecoding() {
        decoding = &seen;
        createStream = stream_.original<decltype(CreateStreamOnHGlobal)>();
        createInstance = instance_.original<decltype(CoCreateInstance)>();
        convert = conversion_.original<decltype(WICConvertBitmapSource)>();
        allocateBlock = alloc_.original<decltype(GlobalAlloc)>();
        freeBlock = free_.original<decltype(GlobalFree)>();
    }

    Image decode() { return decodePngResource(TEST_PNG_TWELVE_PIXELS); }

    /// Whoever made an object that another one refers to must have let it go by now.
    void expectAllReleased() {
        EXPECT_EQ(referencesAfter(seen.converted), 0U) << "the converted picture";
        EXPECT_EQ(referencesAfter(seen.frame), 0U) << "the frame";
        EXPECT_EQ(referencesAfter(seen.decoder), 0U) << "the decoder";
        EXPECT_EQ(referencesAfter(seen.stream), 0U) << "the stream";
    }

    Decoding seen;

private:
    ImportOverride stream_{"ole32.dll", "CreateStreamOnHGlobal", noteStream};
    ImportOverride instance_{"ole32.dll", "CoCreateInstance", noteInstance};
    ImportOverride conversion_{"windowscodecs.dll", "WICConvertBitmapSource", noteConversion};
    ImportOverride alloc_{"kernel32.dll", "GlobalAlloc", countAlloc};
    ImportOverride free_{"kernel32.dll", "GlobalFree", countFree};
};

}  // namespace

TEST_F(PngResource, PixelIsPremultipliedBlueGreenRedAlphaInMemory) {
    const Image image = decodePngResource(TEST_PNG_ONE_PIXEL);
    ASSERT_NE(image.bitmap, nullptr);
    EXPECT_EQ(image.bitmap->GetLastStatus(), Gdiplus::Ok);
    EXPECT_EQ(image.bitmap->GetPixelFormat(), PixelFormat32bppPARGB);
    ASSERT_NE(image.pixels, nullptr);
    constexpr std::array<std::byte, 4> kExpected{
        std::byte{25}, std::byte{50}, std::byte{100}, std::byte{128}};
    for (std::size_t index = 0; index < kExpected.size(); ++index) {
        EXPECT_EQ(image.pixels[index], kExpected[index]) << index;
    }
}

TEST_F(PngResource, RowsAndColumnsKeepTheirPlaces) {
    const Image image = decodePngResource(TEST_PNG_TWELVE_PIXELS);
    ASSERT_NE(image.bitmap, nullptr);
    const Picture expected{4,
                           3,
                           {0xFFFF0000,
                            0xFF00FF00,
                            0xFF0000FF,
                            0xFFFFFFFF,
                            0x80800000,
                            0x80008000,
                            0x80000080,
                            0x80643219,
                            0x00000000,
                            0xFF0A141E,
                            0x01000000,
                            0xFF000000}};
    EXPECT_TRUE(samePicture(readPicture(*image.bitmap), expected));
}

TEST_F(PngResource, PaletteIsConverted) {
    const Image image = decodePngResource(TEST_PNG_PALETTE);
    ASSERT_NE(image.bitmap, nullptr);
    EXPECT_TRUE(samePicture(readPicture(*image.bitmap), {2, 1, {0xFF010203, 0xFFFA8005}}));
}

TEST_F(PngResource, BitmapReadsThePixelsItCameWith) {
    const Image image = decodePngResource(TEST_PNG_ONE_PIXEL);
    ASSERT_NE(image.bitmap, nullptr);
    image.pixels[0] = std::byte{17};
    EXPECT_EQ(readPicture(*image.bitmap).at(0, 0), 0x80643211U);
}

TEST_F(PngResource, WhatIsNoWholePngIsRefused) {
    struct Case {
        const char* name;
        std::uintptr_t id;
    };
    constexpr std::array<Case, 8> cases{{
        {"missing", TEST_PNG_MISSING},
        {"of another type", TEST_BITMAP_GLYPH},
        {"corrupt", TEST_PNG_CORRUPT},
        {"truncated", TEST_PNG_TRUNCATED},
        {"damaged", TEST_PNG_DAMAGED},
        {"without pixels", TEST_PNG_NO_PIXELS},
        {"claiming a huge size", TEST_PNG_HUGE_CLAIM},
        {"a GIF", TEST_GIF_TWO_FRAMES},
    }};
    for (const Case& bad : cases) {
        const Image image = decodePngResource(bad.id);
        EXPECT_EQ(image.bitmap, nullptr) << bad.name;
        EXPECT_EQ(image.pixels, nullptr) << bad.name;
    }
}

TEST_F(PngResource, OneFrameOfAnotherDecoderIsTaken) {
    const ReplacedPngDecoder decoder(ReplacedPngDecoder::With::GifDecoder);
    EXPECT_NE(decodePngResource(TEST_GIF_ONE_FRAME).bitmap, nullptr);
    EXPECT_EQ(decoder.requests, 1);
}

TEST_F(PngResource, SeveralFramesAreRefused) {
    const ReplacedPngDecoder decoder(ReplacedPngDecoder::With::GifDecoder);
    EXPECT_EQ(decodePngResource(TEST_GIF_TWO_FRAMES).bitmap, nullptr);
    EXPECT_EQ(decoder.requests, 1);
}

TEST_F(PngResource, AnAnimationIsItsFirstPictureBecauseTheDecoderReportsOneFrame) {
    const Image image = decodePngResource(TEST_PNG_ANIMATED);
    ASSERT_NE(image.bitmap, nullptr);
    EXPECT_EQ(readPicture(*image.bitmap), plainPicture(2, 2, 0xFFFF0000));
}

TEST_F(PngResource, WithoutADecoderThereIsNoImage) {
    const ReplacedPngDecoder decoder(ReplacedPngDecoder::With::Nothing);
    EXPECT_EQ(decodePngResource(TEST_PNG_ONE_PIXEL).bitmap, nullptr);
    EXPECT_EQ(decoder.requests, 1);
}

TEST(PngResourceWithoutCom, ThereIsNoImage) {
    const Panelix::GdiplusSession gdiplus;
    EXPECT_EQ(decodePngResource(TEST_PNG_ONE_PIXEL).bitmap, nullptr);
}

TEST_F(PngResource, ManyDecodesKeepWorking) {
    for (int round = 0; round < 2'000; ++round) {
        ASSERT_NE(decodePngResource(TEST_PNG_TWELVE_PIXELS).bitmap, nullptr) << round;
        ASSERT_EQ(decodePngResource(TEST_PNG_TRUNCATED).bitmap, nullptr) << round;
    }
}

TEST_F(PngDecoding, ReleasesEveryObjectAndLeavesItsMemoryToTheStream) {
    const GdiplusLedger ledger;
    {
        const Image image = decode();
        ASSERT_NE(image.bitmap, nullptr);
        ASSERT_NE(seen.converted, nullptr);
        expectAllReleased();
        EXPECT_EQ(ledger.outstanding(), (GdiplusLedger::Numbers{{"heap block", 1}, {"image", 1}}));
    }
    EXPECT_NE(seen.streamFreesItsBlock, FALSE);
    EXPECT_EQ(seen.blocksTaken, 1);
    EXPECT_EQ(seen.blocksFreed, 0) << "by the stream, and by nobody else";
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
}

TEST_F(PngDecoding, FreesItsMemoryItselfWithoutAStream) {
    seen.failStream = true;
    EXPECT_EQ(decode().bitmap, nullptr);
    EXPECT_EQ(seen.blocksTaken, 1);
    EXPECT_EQ(seen.blocksFreed, 1);
}

TEST_F(PngDecoding, WithoutAConversionThereIsNoImageAndNothingIsKept) {
    seen.failConversion = true;
    EXPECT_EQ(decode().bitmap, nullptr);
    ASSERT_NE(seen.frame, nullptr);
    expectAllReleased();
}

TEST_F(PngDecoding, APictureThatCannotBeReadIsNoImageAndNothingIsKept) {
    for (const HRESULT sizeResult : {S_OK, E_FAIL}) {
        UnreadablePicture picture;
        picture.sizeResult = sizeResult;
        seen.unreadable = &picture;
        const GdiplusLedger ledger;
        const Image image = decode();
        EXPECT_EQ(image.bitmap, nullptr);
        EXPECT_EQ(image.pixels, nullptr);
        EXPECT_EQ(picture.references, 0U);
        expectAllReleased();
        EXPECT_EQ(ledger.taken(), GdiplusLedger::Numbers{});
    }
}
