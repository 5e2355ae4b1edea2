#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Replaces one function that this program imports, for as long as it lives: calls out of the program's own
/// code, that of the tested layers included, go to the replacement. Calls inside the system's libraries stay
/// as they are. (The function that makes the override may have read the import before: calls belong into
/// another.) For what no stand-in and no real object can show: a call that fails, a record as it was
/// handed over, how often something was given back. Of overrides of one function the last one made goes
/// first.
class ImportOverride {
public:
    /// What a function is imported by: its name, or its ordinal and then no name.
    struct Key {
        // Implicit: tests name the function.
        Key(const char* function) : name(function) {}
        Key(std::string function) : name(std::move(function)) {}
        Key(int number) : ordinal(static_cast<std::uint16_t>(number)) {}

        std::string name;
        std::uint16_t ordinal = 0;
    };

    /// `module` is the library's file name, in any case, as the program's import table has it. `importer` is
    /// the file name of a loaded library whose imports are meant in place of the program's. Throws
    /// std::invalid_argument when the function is not imported that way: the test could not fail then.
    template <typename Function>
    ImportOverride(const std::string& module,
                   const Key& function,
                   Function* replacement,
                   const wchar_t* importer = nullptr)
        : ImportOverride(module, function, importer, reinterpret_cast<void*>(replacement)) {}
    ~ImportOverride();
    ImportOverride(const ImportOverride&) = delete;
    ImportOverride& operator=(const ImportOverride&) = delete;

    /// What the program would call without the override, of the replacement's type.
    template <typename Function>
    Function* original() const {
        return reinterpret_cast<Function*>(original_);
    }

private:
    ImportOverride(const std::string& module,
                   const Key& function,
                   const wchar_t* importer,
                   void* replacement);

    /// The import table's entry.
    void** slot_;
    void* original_;
};

/// The names of the functions that this program imports from a library, in the table's order, without those
/// that it imports by ordinal. `module` as for an override; empty when there is no such library.
std::vector<std::string> importedFunctions(const std::string& module);
