#pragma once

#include <string>

namespace Panelix {

/// The framework's one exception: a condition under which the program cannot go on. It is caught at the
/// program's entry only, which shows `message` in an error box captioned with `title`.
struct SysException {
    SysException(std::wstring message, std::wstring title);

    std::wstring message;
    std::wstring title;
};

}  // namespace Panelix
