#include "framework/drawing/image.h"

#include <windows.h>

#include <gdiplus.h>
#include <shlwapi.h>
#include <wincodec.h>
#include <wrl/client.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "pages/image_ids.h"
#include "tests/framework/drawing/drawing_fixture.h"
#include "tests/hostile/random_inputs.h"
#include "tests/stats/free_handles.h"
#include "tests/stats/private_memory.h"
#include "tests/support/gdiplus_ledger.h"
#include "tests/support/import_override.h"

// The shipped pictures, damaged in ways that get deep into the decoder: checksums are right more often than
// not.

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::array<int, 10> kPictures = {IDP_OVERLAY,
                                           IDP_BATTERY_WIRED,
                                           IDP_MICROPHONE_ON,
                                           IDP_SPEAKER_ON,
                                           IDP_BATTERY_EMPTY,
                                           IDP_BATTERY_FULL,
                                           IDP_BATTERY_LOW,
                                           IDP_BATTERY_MEDIUM,
                                           IDP_MICROPHONE_MUTED,
                                           IDP_SPEAKER_MUTED};

constexpr std::size_t kSignatureBytes = 8;
/// From the header's type.
constexpr std::size_t kWidthOffset = 4;
constexpr std::size_t kHeightOffset = 8;

/// Takes the place of every resource's bytes.
Bytes damaged;

DWORD WINAPI sizeOfDamaged(HMODULE, HRSRC) {
    return static_cast<DWORD>(damaged.size());
}

LPVOID WINAPI damagedBytes(HGLOBAL) {
    return damaged.data();
}

/// The stream that Wine puts over a block reads beyond the block's end once its position lies there, as
/// behind a chunk that claims too great a length: in its place another one of the system's over the same
/// bytes.
HRESULT WINAPI boundedStream(HGLOBAL block, BOOL frees, LPSTREAM* stream) {
    EXPECT_NE(frees, FALSE);
    *stream = SHCreateMemStream(damaged.data(), static_cast<UINT>(damaged.size()));
    if (*stream == nullptr) {
        return E_OUTOFMEMORY;
    }
    GlobalFree(block);
    return S_OK;
}

Bytes resourceBytes(int id) {
    const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(id), L"PNG");
    EXPECT_NE(found, nullptr);
    const auto* const bytes = static_cast<const std::uint8_t*>(LockResource(LoadResource(nullptr, found)));
    return Bytes(bytes, bytes + SizeofResource(nullptr, found));
}

void append(Bytes& bytes, std::uint32_t number) {
    for (const int shift : {24, 16, 8, 0}) {
        bytes.push_back(static_cast<std::uint8_t>(number >> shift));
    }
}

std::uint32_t numberAt(const Bytes& bytes, std::size_t offset) {
    std::uint32_t number = 0;
    for (std::size_t i = offset; i < offset + 4; ++i) {
        number = number << 8 | (i < bytes.size() ? bytes[i] : 0U);
    }
    return number;
}

std::uint32_t crcOf(const Bytes& bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const std::uint8_t value : bytes) {
        crc ^= value;
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc >> 1 ^ (0xEDB88320 & (0U - (crc & 1U)));
        }
    }
    return ~crc;
}

struct Chunk {
    std::string type;
    Bytes data;
};

std::vector<Chunk> chunksOf(const Bytes& png) {
    std::vector<Chunk> chunks;
    for (std::size_t offset = kSignatureBytes; offset + 12 <= png.size();) {
        const std::uint32_t length = numberAt(png, offset);
        const auto* const start = png.data() + offset;
        chunks.push_back({std::string(start + 4, start + 8), Bytes(start + 8, start + 8 + length)});
        offset += 12 + length;
    }
    return chunks;
}

Bytes pngOf(const std::vector<Chunk>& chunks) {
    Bytes png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    for (const Chunk& chunk : chunks) {
        append(png, static_cast<std::uint32_t>(chunk.data.size()));
        Bytes checked(chunk.type.begin(), chunk.type.end());
        checked.insert(checked.end(), chunk.data.begin(), chunk.data.end());
        png.insert(png.end(), checked.begin(), checked.end());
        append(png, crcOf(checked));
    }
    return png;
}

/// A zlib stream of these bytes, not compressed.
Bytes storedStream(const Bytes& raw) {
    Bytes stream = {0x78, 0x01};
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (std::size_t start = 0; start < raw.size() || start == 0; start += 0xFFFF) {
        const std::size_t length = std::min<std::size_t>(raw.size() - start, 0xFFFF);
        stream.push_back(start + length == raw.size() ? 1 : 0);
        for (const std::size_t field : {length, ~length}) {
            stream.push_back(static_cast<std::uint8_t>(field));
            stream.push_back(static_cast<std::uint8_t>(field >> 8));
        }
        for (std::size_t i = start; i < start + length; ++i) {
            stream.push_back(raw[i]);
            a = (a + raw[i]) % 65521;
            b = (b + a) % 65521;
        }
    }
    append(stream, b << 16 | a);
    return stream;
}

Chunk* find(std::vector<Chunk>& chunks, const char* type) {
    const auto found =
        std::find_if(chunks.begin(), chunks.end(), [type](const Chunk& chunk) { return chunk.type == type; });
    return found != chunks.end() ? &*found : nullptr;
}

void setNumber(Bytes& bytes, std::size_t offset, std::uint32_t number) {
    Bytes field;
    append(field, number);
    std::copy(field.begin(), field.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

std::uint32_t randomLength(RandomInputs& inputs) {
    constexpr std::array<std::uint32_t, 12> kLengths = {
        0, 1, 2, 319, 321, 65'535, 65'536, 0x20000000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};
    return inputs.chance(4) ? inputs.number() : inputs.oneOf(kLengths);
}

/// Size, depth, colour type, method or interlacing of the header.
void changeHeader(RandomInputs& inputs, std::vector<Chunk>& chunks) {
    Bytes& header = chunks.front().data;
    switch (inputs.below(4)) {
        case 0:
            setNumber(header, 4 * inputs.below(2), randomLength(inputs));
            break;
        case 1:
            setNumber(header, 0, 1 + inputs.below(400));
            setNumber(header, 4, 1 + inputs.below(300));
            break;
        default:
            for (unsigned changes = 1 + inputs.below(3); changes > 0; --changes) {
                constexpr std::array<std::uint8_t, 9> kValues = {0, 1, 2, 3, 4, 6, 8, 16, 255};
                header[8 + inputs.below(5)] = inputs.oneOf(kValues);
            }
            break;
    }
}

void flipBits(RandomInputs& inputs, Bytes& bytes) {
    for (unsigned flips = 1 + inputs.below(8); flips > 0 && !bytes.empty(); --flips) {
        bytes[inputs.below(bytes.size())] ^= static_cast<std::uint8_t>(1U << inputs.below(8));
    }
}

/// Another picture altogether: any kind of pixels, rows with any filter, and too few or too many of them.
std::vector<Chunk> otherPicture(RandomInputs& inputs) {
    constexpr std::array<std::uint8_t, 5> kColourTypes = {0, 2, 3, 4, 6};
    constexpr std::array<std::uint8_t, 5> kDepths = {1, 2, 4, 8, 16};
    Bytes header;
    append(header, 1 + inputs.below(40));
    append(header, 1 + inputs.below(40));
    header.insert(header.end(),
                  {inputs.oneOf(kDepths),
                   inputs.oneOf(kColourTypes),
                   0,
                   0,
                   static_cast<std::uint8_t>(inputs.below(2))});
    Bytes rows = inputs.bytes(inputs.below(12'000));
    for (std::uint8_t& value : rows) {
        value = static_cast<std::uint8_t>(value % (inputs.chance(50) ? 255 : 5));
    }
    return {{"IHDR", header},
            {"PLTE", inputs.bytes(3 * inputs.below(257))},
            {"tRNS", inputs.bytes(inputs.below(257))},
            {"IDAT", storedStream(rows)},
            {"IEND", {}}};
}

void disorder(RandomInputs& inputs, std::vector<Chunk>& chunks) {
    constexpr std::array<const char*, 15> kTypes = {"IHDR",
                                                    "PLTE",
                                                    "IDAT",
                                                    "IEND",
                                                    "tRNS",
                                                    "gAMA",
                                                    "cHRM",
                                                    "iCCP",
                                                    "sBIT",
                                                    "acTL",
                                                    "fcTL",
                                                    "tEXt",
                                                    "zTXt",
                                                    "pHYs",
                                                    "ABCD"};
    const std::size_t place = inputs.below(chunks.size());
    const auto at = chunks.begin() + static_cast<std::ptrdiff_t>(place);
    switch (inputs.below(4)) {
        case 0:
            chunks.erase(at);
            break;
        case 1:
            std::swap(*at, chunks[inputs.below(chunks.size())]);
            break;
        case 2:
            chunks.insert(at, Chunk(*at));
            break;
        default:
            chunks.insert(at, {inputs.oneOf(kTypes), inputs.bytes(inputs.below(900))});
            break;
    }
}

Bytes damage(RandomInputs& inputs, const Bytes& png) {
    std::vector<Chunk> chunks = chunksOf(png);
    Bytes bytes = png;
    switch (inputs.below(8)) {
        case 0:
            flipBits(inputs, bytes);
            return bytes;
        case 1:
            bytes.resize(inputs.below(bytes.size()) + 1);
            return bytes;
        case 2: {  // The length of a chunk.
            const std::size_t chunk = inputs.chance(2) ? kSignatureBytes : kSignatureBytes + 25;
            setNumber(bytes, chunk, inputs.chance(2) ? randomLength(inputs) : inputs.below(bytes.size()));
            return bytes;
        }
        case 3:
        case 4:
            changeHeader(inputs, chunks);
            break;
        case 5:
            flipBits(inputs, find(chunks, "IDAT")->data);
            break;
        case 6:
            chunks = otherPicture(inputs);
            break;
        default:
            for (unsigned changes = 1 + inputs.below(3); changes > 0 && !chunks.empty(); --changes) {
                disorder(inputs, chunks);
            }
            break;
    }
    return pngOf(chunks);
}

/// Whether one of the headers says so: a damaged picture may have several, and not as the first chunk.
bool declaresSize(const Bytes& png, std::uint32_t width, std::uint32_t height) {
    constexpr std::array<std::uint8_t, 4> kHeader = {'I', 'H', 'D', 'R'};
    for (auto at = png.begin();; ++at) {
        at = std::search(at, png.end(), kHeader.begin(), kHeader.end());
        if (at == png.end()) {
            return false;
        }
        const auto offset = static_cast<std::size_t>(at - png.begin());
        if (numberAt(png, offset + kWidthOffset) == width &&
            numberAt(png, offset + kHeightOffset) == height) {
            return true;
        }
    }
}

/// What the system's decoder alone does with the same bytes.
void decodeBare() {
    Microsoft::WRL::ComPtr<IStream> stream;
    *stream.GetAddressOf() = SHCreateMemStream(damaged.data(), static_cast<UINT>(damaged.size()));
    Microsoft::WRL::ComPtr<IWICBitmapDecoder> decoder;
    ASSERT_EQ(CoCreateInstance(CLSID_WICPngDecoder2, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&decoder)),
              S_OK);
    decoder->Initialize(stream.Get(), WICDecodeMetadataCacheOnLoad);
}

class DamagedPng : public DrawingTest {};

TEST_F(DamagedPng, IsAnImageOfItsOwnSizeOrNone) {
    RandomInputs inputs("damaged PNG pictures", 200, 10'000);
    std::vector<Bytes> pictures;
    for (const int id : kPictures) {
        pictures.push_back(resourceBytes(id));
        ASSERT_NE(Panelix::decodePngResource(static_cast<std::uintptr_t>(id)).bitmap, nullptr);
        ASSERT_EQ(pngOf(chunksOf(pictures.back())), pictures.back()) << "a damage is all that changes";
    }
    const ImportOverride size("kernel32.dll", "SizeofResource", sizeOfDamaged);
    const ImportOverride bytes("kernel32.dll", "LockResource", damagedBytes);
    const ImportOverride stream("ole32.dll", "CreateStreamOnHGlobal", boundedStream);
    // Wine's decoder keeps memory of pictures that break off.
    const std::size_t memoryBefore = privateMemoryBytes();
    while (inputs.next()) {
        damaged = damage(inputs, inputs.oneOf(pictures));
        ASSERT_NO_FATAL_FAILURE(decodeBare());
    }
    const std::size_t memory = privateMemoryBytes();
    const std::size_t keptByTheDecoder = memory - std::min(memory, memoryBefore);
    inputs.restart();
    const std::uintptr_t handles = greatestOfNextHandles();
    const GdiplusLedger ledger;
    unsigned accepted = 0;
    while (inputs.next()) {
        damaged = damage(inputs, inputs.oneOf(pictures));
        const Panelix::Image image = Panelix::decodePngResource(IDP_OVERLAY);
        if (image.bitmap == nullptr) {
            ASSERT_EQ(image.pixels, nullptr) << inputs.place();
            continue;
        }
        ++accepted;
        ASSERT_EQ(image.bitmap->GetLastStatus(), Gdiplus::Ok) << inputs.place();
        ASSERT_TRUE(declaresSize(damaged, image.bitmap->GetWidth(), image.bitmap->GetHeight()))
            << inputs.place();
        // As a page takes it: every pixel is read.
        Screen screen;
        ASSERT_EQ(screen.graphics.DrawImage(image.bitmap.get(), 0, 0), Gdiplus::Ok) << inputs.place();
    }
    std::printf("%u of them decoded\n", accepted);
    EXPECT_GT(accepted, inputs.taken() / 50);
    EXPECT_LT(accepted, inputs.taken() * 9 / 10);
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
    EXPECT_LE(greatestOfNextHandles(), handles + 64);
    EXPECT_LE(privateMemoryBytes(), memory + keptByTheDecoder + std::size_t{2} * 1024 * 1024);
}

}  // namespace
