#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

/// Called by libFuzzer with each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Ends the process with an input that breaks a promise; `promise` says which.
inline void require(bool holds, const char* promise) {
    if (!holds) {
        std::fprintf(stderr, "Broken promise: %s\n", promise);
        std::abort();
    }
}

/// One character per byte: ASCII as it is, and the other bytes as U+2000 to U+207F, among which are blanks.
inline std::wstring wideText(std::string_view bytes) {
    std::wstring text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        text += static_cast<wchar_t>(code < 0x80 ? code : 0x2000 + code - 0x80);
    }
    return text;
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}
