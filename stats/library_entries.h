#pragma once

#include <tuple>

enum class EntryNeed {
    Required,
    /// Its slot may stay null.
    Optional,
};

/// One line of a library's list of entries: what the entry is looked up by, the slot in `Table` that keeps
/// it, and whether the library is of any use without it.
template <typename Key, typename Table, typename Function>
struct LibraryEntry {
    Key key;
    Function* Table::*slot;
    EntryNeed need;
};

/// Looks every entry of the list up: `address(key)` answers its untyped address or null. False when a
/// required one is missing.
template <typename Table, typename... Entries, typename AddressOf>
bool fillEntries(Table& table, const std::tuple<Entries...>& list, const AddressOf& address) {
    const auto find = [&]<typename Key, typename Function>(const LibraryEntry<Key, Table, Function>& entry) {
        // Through the untyped pointer, because the compiler rightly mistrusts a cast between function types.
        table.*entry.slot = reinterpret_cast<Function*>(address(entry.key));
        return table.*entry.slot != nullptr || entry.need == EntryNeed::Optional;
    };
    return std::apply([&](const auto&... entries) { return (find(entries) && ...); }, list);
}
