#include "stats/core_temp_names.h"

#include <string_view>

namespace {

constexpr std::string_view kClass = "CoreTempProxy@@";

// Public (Q) or public virtual (U), const (EB) or not (EA), the one calling convention (A).
constexpr std::string_view kAccesses[] = {"QEBA", "QEAA", "UEBA", "UEAA"};

// Result and arguments, by the rules of the Microsoft compiler for x64.
std::vector<std::string_view> typesOf(CoreTempSignature signature) {
    switch (signature) {
        case CoreTempSignature::Bool:
            return {"_NXZ"};
        case CoreTempSignature::Float:
            return {"MXZ"};
        case CoreTempSignature::FloatAtIndex:
            return {"MH@Z", "MI@Z"};
        case CoreTempSignature::Count:
            return {"IXZ", "KXZ", "HXZ"};
        case CoreTempSignature::Text:
            return {"PEBDXZ", "PEADXZ"};
        case CoreTempSignature::Constructor:
        case CoreTempSignature::Destructor:
            break;
    }
    return {};
}

std::string join(std::string_view first, std::string_view second, std::string_view third = {}) {
    std::string text(first);
    text += second;
    text += third;
    return text;
}

}  // namespace

std::vector<std::string> coreTempExportNames(const CoreTempMethod& method) {
    if (method.signature == CoreTempSignature::Constructor) {
        return {join("??0", kClass, "QEAA@XZ")};
    }
    if (method.signature == CoreTempSignature::Destructor) {
        return {join("??1", kClass, "UEAA@XZ"), join("??1", kClass, "QEAA@XZ")};
    }
    std::vector<std::string> names;
    for (const std::string_view types : typesOf(method.signature)) {
        for (const std::string_view access : kAccesses) {
            names.push_back(join("?", method.name, "@") + join(kClass, access, types));
        }
    }
    return names;
}
