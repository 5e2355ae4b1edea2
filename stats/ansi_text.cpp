#include "stats/ansi_text.h"

#include <windows.h>

std::wstring wideFromAnsi(std::string_view text) {
    const int bytes = static_cast<int>(text.size());
    // The system refuses an empty text, and the result is then 0 as well.
    const int length = MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, nullptr, 0);
    if (length <= 0) {
        return {};
    }
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, wide.data(), length);
    return wide;
}
