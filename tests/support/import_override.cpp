#include "tests/support/import_override.h"

#include <windows.h>

#include <cstdint>
#include <stdexcept>

namespace {

/// A program or library in memory.
class Image {
public:
    explicit Image(HMODULE module) : base_(reinterpret_cast<std::uintptr_t>(module)) {}

    /// Null when the image does not import the function from that library.
    void** slotOf(const std::string& module, const std::string& function) const;

private:
    template <typename Type>
    Type* at(std::uintptr_t rva) const {
        return reinterpret_cast<Type*>(base_ + rva);
    }

    const IMAGE_IMPORT_DESCRIPTOR* firstImport() const;
    void** slotIn(const IMAGE_IMPORT_DESCRIPTOR& library, const std::string& function) const;

    std::uintptr_t base_;
};

const IMAGE_IMPORT_DESCRIPTOR* Image::firstImport() const {
    const auto* const header =
        at<const IMAGE_NT_HEADERS>(static_cast<std::uintptr_t>(at<const IMAGE_DOS_HEADER>(0)->e_lfanew));
    return at<const IMAGE_IMPORT_DESCRIPTOR>(
        header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
}

// Null when the library's part of the import table has no such name.
void** Image::slotIn(const IMAGE_IMPORT_DESCRIPTOR& library, const std::string& function) const {
    const auto* name = at<const IMAGE_THUNK_DATA>(library.OriginalFirstThunk);
    auto* slot = at<void*>(library.FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++slot) {
        const bool byOrdinal = IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal);
        if (!byOrdinal && function == at<const IMAGE_IMPORT_BY_NAME>(name->u1.AddressOfData)->Name) {
            return slot;
        }
    }
    return nullptr;
}

// A library may stand in the table several times.
void** Image::slotOf(const std::string& module, const std::string& function) const {
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

void** slotOf(const wchar_t* importer, const std::string& module, const std::string& function) {
    const HMODULE image = GetModuleHandleW(importer);
    void** const slot = image != nullptr ? Image(image).slotOf(module, function) : nullptr;
    if (slot == nullptr) {
        throw std::invalid_argument(function + " of " + module + " is not imported there");
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

ImportOverride::ImportOverride(
    const std::string& module, const std::string& function, void* replacement, const wchar_t* importer, int)
    : slot_(slotOf(importer, module, function)),
      original_(*slot_) {
    write(slot_, replacement);
}

ImportOverride::~ImportOverride() {
    write(slot_, original_);
}
