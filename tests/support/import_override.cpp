#include "tests/support/import_override.h"

#include <windows.h>

#include <stdexcept>

namespace {

using Key = ImportOverride::Key;

/// A program or library in memory.
class Image {
public:
    explicit Image(HMODULE module) : base_(reinterpret_cast<std::uintptr_t>(module)) {}

    /// Null when the image does not import the function from that library.
    void** slotOf(const std::string& module, const Key& function) const;
    std::vector<std::string> namesFrom(const std::string& module) const;

private:
    template <typename Type>
    Type* at(std::uintptr_t rva) const {
        return reinterpret_cast<Type*>(base_ + rva);
    }

    const IMAGE_IMPORT_DESCRIPTOR* firstImport() const;
    bool isImportOf(const IMAGE_THUNK_DATA& import, const Key& function) const;
    void** slotIn(const IMAGE_IMPORT_DESCRIPTOR& library, const Key& function) const;

    std::uintptr_t base_;
};

const IMAGE_IMPORT_DESCRIPTOR* Image::firstImport() const {
    const auto* const header =
        at<const IMAGE_NT_HEADERS>(static_cast<std::uintptr_t>(at<const IMAGE_DOS_HEADER>(0)->e_lfanew));
    return at<const IMAGE_IMPORT_DESCRIPTOR>(
        header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
}

bool Image::isImportOf(const IMAGE_THUNK_DATA& import, const Key& function) const {
    if (IMAGE_SNAP_BY_ORDINAL(import.u1.Ordinal)) {
        return function.name.empty() && IMAGE_ORDINAL(import.u1.Ordinal) == function.ordinal;
    }
    return function.name == at<const IMAGE_IMPORT_BY_NAME>(import.u1.AddressOfData)->Name;
}

// Null when the library's part of the import table has no such function.
void** Image::slotIn(const IMAGE_IMPORT_DESCRIPTOR& library, const Key& function) const {
    const auto* import = at<const IMAGE_THUNK_DATA>(library.OriginalFirstThunk);
    auto* slot = at<void*>(library.FirstThunk);
    for (; import->u1.AddressOfData != 0; ++import, ++slot) {
        if (isImportOf(*import, function)) {
            return slot;
        }
    }
    return nullptr;
}

// A library may stand in the table several times.
void** Image::slotOf(const std::string& module, const Key& function) const {
    for (const auto* library = firstImport(); library->Name != 0; ++library) {
        if (lstrcmpiA(at<const char>(library->Name), module.c_str()) != 0) {
            continue;
        }
        if (void** const slot = slotIn(*library, function)) {
            return slot;
        }
    }
    return nullptr;
}

std::vector<std::string> Image::namesFrom(const std::string& module) const {
    std::vector<std::string> names;
    for (const auto* library = firstImport(); library->Name != 0; ++library) {
        if (lstrcmpiA(at<const char>(library->Name), module.c_str()) != 0) {
            continue;
        }
        for (const auto* import = at<const IMAGE_THUNK_DATA>(library->OriginalFirstThunk);
             import->u1.AddressOfData != 0;
             ++import) {
            if (!IMAGE_SNAP_BY_ORDINAL(import->u1.Ordinal)) {
                names.emplace_back(at<const IMAGE_IMPORT_BY_NAME>(import->u1.AddressOfData)->Name);
            }
        }
    }
    return names;
}

void** slotOf(const wchar_t* importer, const std::string& module, const Key& function) {
    const HMODULE image = GetModuleHandleW(importer);
    void** const slot = image != nullptr ? Image(image).slotOf(module, function) : nullptr;
    if (slot == nullptr) {
        const std::string what = function.name.empty() ? std::to_string(function.ordinal) : function.name;
        throw std::invalid_argument(what + " of " + module + " is not imported there");
    }
    return slot;
}

void write(void** slot, void* value) {
    DWORD protection = 0;
    VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection);
    *slot = value;
    VirtualProtect(slot, sizeof(*slot), protection, &protection);
}

}  // namespace

ImportOverride::ImportOverride(const std::string& module,
                               const Key& function,
                               const wchar_t* importer,
                               void* replacement)
    : slot_(slotOf(importer, module, function)),
      original_(*slot_) {
    write(slot_, replacement);
}

ImportOverride::~ImportOverride() {
    write(slot_, original_);
}

std::vector<std::string> importedFunctions(const std::string& module) {
    return Image(GetModuleHandleW(nullptr)).namesFrom(module);
}
