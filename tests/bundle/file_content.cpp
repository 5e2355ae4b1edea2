#include "tests/bundle/file_content.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "tests/bundle/utf8.h"

namespace Bundle {

std::string contentOf(const std::filesystem::path& file) {
    const std::ifstream stream(file, std::ios::binary);
    std::ostringstream content;
    if (!stream) {
        throw std::runtime_error("Cannot read " + toUtf8(file.wstring()));
    }
    content << stream.rdbuf();
    return content.str();
}

}  // namespace Bundle
