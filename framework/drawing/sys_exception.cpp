#include "framework/drawing/sys_exception.h"

#include <utility>

namespace Panelix {

SysException::SysException(std::wstring messageText, std::wstring titleText)
    : message(std::move(messageText)),
      title(std::move(titleText)) {}

}  // namespace Panelix
