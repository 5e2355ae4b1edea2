#pragma once

#include <string>

/// Replaces one function that this program imports, for as long as it lives: calls out of the program's own
/// code, that of the tested layers included, go to the replacement. Calls inside the system's libraries stay
/// as they are. For what no stand-in and no real object can show: a call that fails, a record as it was
/// handed over, how often something was given back. Of overrides of one function the last one made goes
/// first.
class ImportOverride {
public:
    /// `module` is the library's file name, in any case, as the program's import table has it. `importer` is
    /// the file name of a loaded library whose imports are meant in place of the program's. Throws
    /// std::invalid_argument when the function is not imported by this name: the test could not fail then.
    template <typename Function>
    ImportOverride(const std::string& module,
                   const std::string& function,
                   Function* replacement,
                   const wchar_t* importer = nullptr)
        : ImportOverride(module, function, reinterpret_cast<void*>(replacement), importer, 0) {}
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
                   const std::string& function,
                   void* replacement,
                   const wchar_t* importer,
                   int);

    /// The import table's entry.
    void** slot_;
    void* original_;
};
