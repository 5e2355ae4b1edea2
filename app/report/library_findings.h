#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "app/report/report_writer.h"
#include "framework/core/library_entries.h"

/// Where a vendor's library is looked for, and what was found: `module` is null when it did not load, because
/// of `error`. Returns whether it did.
bool reportLibrary(ReportWriter& writer,
                   const wchar_t* file,
                   const std::vector<std::wstring>& folders,
                   HMODULE module,
                   DWORD error);

/// "all of 7", or which are missing, one to a line.
void reportEntries(ReportWriter& writer, std::size_t count, const std::vector<std::wstring>& missing);

/// Adds `name(key)` of every entry of a library's list of which `address(key)` is null.
template <typename... Entries, typename AddressOf, typename NameOf>
void addMissingEntries(std::vector<std::wstring>& missing,
                       const std::tuple<Entries...>& list,
                       const AddressOf& address,
                       const NameOf& name) {
    const auto look = [&](const auto& entry) {
        if (address(entry.key) == nullptr) {
            missing.push_back(name(entry.key));
        }
    };
    std::apply([&](const auto&... entries) { (look(entries), ...); }, list);
}

/// Letters of ASCII, such as names of exports.
std::wstring wideFromAscii(std::string_view text);
