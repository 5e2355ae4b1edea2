#include "stats/core_temp_entries.h"

#include <string>

void* findCoreTempMethod(const CoreTempMethod& method, const CoreTempExports& exported) {
    for (const std::string& name : coreTempExportNames(method)) {
        if (void* const address = exported(name.c_str())) {
            return address;
        }
    }
    return nullptr;
}

bool findCoreTempEntries(CoreTempEntries& entries, const CoreTempExports& exported) {
    return Panelix::fillEntries(entries, kCoreTempEntries, [&](const CoreTempMethod& method) {
        return findCoreTempMethod(method, exported);
    });
}
