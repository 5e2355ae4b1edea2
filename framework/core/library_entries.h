#pragma once

#include <tuple>
#include <type_traits>

namespace Panelix {

/// Where a table keeps a function.
template <typename Table, typename Function>
using FunctionSlot = Function* Table::*;

/// One line of a library's list of entries: what the entry is looked up by, and the slot in `Table` that
/// keeps it.
template <typename Key, typename Table, typename Function>
struct LibraryEntry {
    Key key;
    FunctionSlot<Table, Function> slot;
};

/// Looks every entry of the list up: `address(key)` returns its untyped address or null, and the slot gets
/// that. False when one is missing.
template <typename Table, typename... Entries, typename AddressOf>
bool fillEntries(Table& table, const std::tuple<Entries...>& list, const AddressOf& address) {
    bool complete = true;
    const auto find = [&](const auto& entry) {
        auto*& slot = table.*entry.slot;
        slot = reinterpret_cast<std::remove_reference_t<decltype(slot)>>(address(entry.key));
        complete = complete && slot != nullptr;
    };
    std::apply([&](const auto&... entries) { (find(entries), ...); }, list);
    return complete;
}

}  // namespace Panelix
