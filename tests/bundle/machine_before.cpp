#include "tests/bundle/machine_before.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "framework/core/lcd_sdk_abi.h"
#include "framework/core/unique_resource.h"
#include "tests/bundle/utf8.h"

namespace Bundle {

namespace {

constexpr char kFirstLine[] = "Kelvaro tests: the machine before, 1";
constexpr char kLastLine[] = "end";
constexpr wchar_t kTestKeys[] = L"Software";
constexpr wchar_t kTestKeyPrefix[] = L"KelvaroTest";
constexpr DWORD kLongestKeyName = 256;

struct Root {
    HKEY key;
    const char* name;
};

const Root kRoots[] = {{HKEY_LOCAL_MACHINE, "HKLM"}, {HKEY_CURRENT_USER, "HKCU"}};

struct KeyPlace {
    HKEY root;
    std::wstring path;
};

std::wstring lcdClassKey() {
    const std::wstring key = Panelix::LcdSdk::kServerBinaryKey;
    return key.substr(0, key.rfind(L'\\'));
}

std::vector<KeyPlace> keysOfTests() {
    return {
        // Core Audio's device enumerator, and its policy configuration.
        {HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\CLSID\\{BCDE0395-E52F-467C-8E3D-C4579291692E}"},
        {HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\CLSID\\{294935CE-F637-4E7C-A41B-AB255460B862}"},
        {HKEY_LOCAL_MACHINE, lcdClassKey()},
        {HKEY_LOCAL_MACHINE, L"Software\\Kelvaro"},
        {HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Run"},
        {HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\UnreadMail"},
    };
}

std::vector<std::filesystem::path> filesOfTests() {
    wchar_t folder[MAX_PATH] = L"";
    GetSystemDirectoryW(folder, MAX_PATH);
    const std::filesystem::path system = folder;
    return {system / L"nvapi64.dll",
            system / L"atiadlxx.dll",
            system / L"atihelper.dll",
            system / L"GetCoreTempInfo.dll"};
}

/// Tests redirect the registry to keys of their own, which those leave behind that were ended.
void removeTestKeys() {
    std::vector<std::wstring> names;
    Panelix::UniqueHkey key;
    RegOpenKeyExW(HKEY_CURRENT_USER, kTestKeys, 0, KEY_READ, key.put());
    std::wstring name(kLongestKeyName, L'\0');
    for (DWORD index = 0, length = kLongestKeyName;
         RegEnumKeyExW(key.get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) ==
         ERROR_SUCCESS;
         ++index, length = kLongestKeyName) {
        if (name.starts_with(kTestKeyPrefix)) {
            names.push_back(name.substr(0, length));
        }
    }
    for (const std::wstring& found : names) {
        writeTree(HKEY_CURRENT_USER, std::wstring(kTestKeys) + L"\\" + found, std::nullopt);
    }
}

// A field of a line, or what it was read from: nothing in it can end the field or the line.

std::string escaped(const std::wstring& text) {
    std::string result;
    for (const char c : toUtf8(text)) {
        if (static_cast<unsigned char>(c) < ' ' || c == '%') {
            char code[4];
            std::snprintf(code, sizeof(code), "%%%02X", static_cast<unsigned char>(c));
            result += code;
        } else {
            result += c;
        }
    }
    return result;
}

std::vector<BYTE> bytesOf(const std::string& hex) {
    std::vector<BYTE> bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(static_cast<BYTE>(std::stoul(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

std::wstring unescaped(const std::string& field) {
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '%' && i + 2 < field.size()) {
            text += static_cast<char>(bytesOf(field.substr(i + 1, 2)).front());
            i += 2;
        } else {
            text += field[i];
        }
    }
    return fromUtf8(text);
}

std::string hexOf(const std::vector<BYTE>& bytes) {
    std::string hex;
    for (const BYTE byte : bytes) {
        char code[3];
        std::snprintf(code, sizeof(code), "%02X", byte);
        hex += code;
    }
    return hex;
}

// A key's line comes before those of what is in it; `leave` ends it.
void addTree(std::string& text, const RegistryTree& tree) {
    for (const auto& [name, value] : tree.values) {
        text +=
            "value\t" + escaped(name) + "\t" + std::to_string(value.type) + "\t" + hexOf(value.data) + "\n";
    }
    for (const auto& [name, key] : tree.keys) {
        text += "enter\t" + escaped(name) + "\n";
        addTree(text, key);
        text += "leave\n";
    }
}

const char* nameOf(HKEY root) {
    return root == kRoots[0].key ? kRoots[0].name : kRoots[1].name;
}

HKEY rootOf(const std::string& name) {
    for (const Root& root : kRoots) {
        if (name == root.name) {
            return root.key;
        }
    }
    throw std::runtime_error("Not a root of the registry: " + name);
}

/// Reads the lines of the text one after the other.
class TextReader {
public:
    void read(const std::string& line) {
        std::vector<std::string> fields;
        std::istringstream stream(line);
        for (std::string field; std::getline(stream, field, '\t');) {
            fields.push_back(field);
        }
        // A value's data may be nothing.
        fields.resize(std::max<std::size_t>(fields.size(), 4));
        obey(fields);
    }

    MachineBefore take() { return std::move(machine_); }

private:
    void obey(const std::vector<std::string>& fields) {
        if (fields[0] == "file") {
            machine_.absentFiles.emplace_back(unescaped(fields[1]));
        } else if (fields[0] == "absent") {
            machine_.keys.push_back({rootOf(fields[1]), unescaped(fields[2]), std::nullopt});
        } else if (fields[0] == "key") {
            machine_.keys.push_back({rootOf(fields[1]), unescaped(fields[2]), RegistryTree{}});
            within_ = {&*machine_.keys.back().tree};
        } else if (fields[0] == "value" && !within_.empty()) {
            within_.back()->values[unescaped(fields[1])] = {static_cast<DWORD>(std::stoul(fields[2])),
                                                            bytesOf(fields[3])};
        } else if (fields[0] == "enter" && !within_.empty()) {
            within_.push_back(&within_.back()->keys[unescaped(fields[1])]);
        } else if (fields[0] == "leave" && within_.size() > 1) {
            within_.pop_back();
        } else {
            throw std::runtime_error("Not a line of what the machine was before: " + fields[0]);
        }
    }

    MachineBefore machine_;
    /// The key that is being read, and those around it.
    std::vector<RegistryTree*> within_;
};

/// What `action` throws goes to `error` unless something is there already.
template <typename Action>
void attempt(std::string& error, const Action& action) {
    try {
        action();
    } catch (const std::exception& exception) {
        if (error.empty()) {
            error = exception.what();
        }
    }
}

}  // namespace

MachineBefore readMachine() {
    MachineBefore before;
    for (const KeyPlace& place : keysOfTests()) {
        before.keys.push_back({place.root, place.path, readTree(place.root, place.path)});
    }
    for (const std::filesystem::path& file : filesOfTests()) {
        if (!exists(file)) {
            before.absentFiles.push_back(file);
        }
    }
    return before;
}

void restore(const MachineBefore& before) {
    std::string error;
    for (const SavedKey& key : before.keys) {
        attempt(error, [&] { writeTree(key.root, key.path, key.tree); });
    }
    for (const std::filesystem::path& file : before.absentFiles) {
        attempt(error, [&] { std::filesystem::remove(file); });
    }
    attempt(error, removeTestKeys);
    if (!error.empty()) {
        throw std::runtime_error(error);
    }
}

std::string toText(const MachineBefore& before) {
    std::string text = std::string(kFirstLine) + "\n";
    for (const std::filesystem::path& file : before.absentFiles) {
        text += "file\t" + escaped(file.wstring()) + "\n";
    }
    for (const SavedKey& key : before.keys) {
        text +=
            std::string(key.tree ? "key\t" : "absent\t") + nameOf(key.root) + "\t" + escaped(key.path) + "\n";
        if (key.tree) {
            addTree(text, *key.tree);
        }
    }
    return text + kLastLine + "\n";
}

MachineBefore machineFromText(const std::string& text) {
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    if (line != kFirstLine) {
        throw std::runtime_error("Not the file of an interrupted run");
    }
    TextReader reader;
    while (std::getline(lines, line)) {
        if (line == kLastLine) {
            return reader.take();
        }
        reader.read(line);
    }
    throw std::runtime_error("The file of the interrupted run has no end");
}

}  // namespace Bundle
