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

using Panelix::decodePngResource;
using Panelix::Image;

namespace {

class PngResource : public DrawingTest {};

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

#pragma GCC diagnostic pop

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

TEST_F(PngResource, AnimatedPngIsRefusedWhenTheDecoderReportsItsFrames) {
    Microsoft::WRL::ComPtr<IStream> stream;
    const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(TEST_PNG_ANIMATED), L"PNG");
    ASSERT_NE(found, nullptr);
    Microsoft::WRL::ComPtr<IWICBitmapDecoder> decoder;
    ASSERT_EQ(CoCreateInstance(CLSID_WICPngDecoder2, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&decoder)),
              S_OK);
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, &stream), S_OK);
    ASSERT_EQ(
        stream->Write(LockResource(LoadResource(nullptr, found)), SizeofResource(nullptr, found), nullptr),
        S_OK);
    ASSERT_EQ(decoder->Initialize(stream.Get(), WICDecodeMetadataCacheOnLoad), S_OK);
    UINT frames = 0;
    ASSERT_EQ(decoder->GetFrameCount(&frames), S_OK);

    const Image image = decodePngResource(TEST_PNG_ANIMATED);
    if (frames == 1) {
        // This system's decoder takes an animation for its first picture.
        ASSERT_NE(image.bitmap, nullptr);
        EXPECT_EQ(readPicture(*image.bitmap), plainPicture(2, 2, 0xFFFF0000));
    } else {
        EXPECT_EQ(image.bitmap, nullptr);
    }
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
