#pragma once

#include <string>

namespace Bundle {

std::string toUtf8(const std::wstring& text);
std::wstring fromUtf8(const std::string& text);

}  // namespace Bundle
