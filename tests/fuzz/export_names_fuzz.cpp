#include <fuzzer/FuzzedDataProvider.h>

#include <cstring>
#include <map>
#include <set>
#include <vector>

#include "stats/core_temp_entries.h"
#include "stats/core_temp_names.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

using Signature = CoreTempSignature;

/// In the order of the slots in CoreTempEntries.
constexpr CoreTempMethod kMethods[] = {
    {"", Signature::Constructor},
    {"", Signature::Destructor},
    {"GetData", Signature::Bool},
    {"IsFahrenheit", Signature::Bool},
    {"GetCPUName", Signature::Text},
    {"GetCPUSpeed", Signature::Float},
    {"GetFSBSpeed", Signature::Float},
    {"GetMultiplier", Signature::Float},
    {"GetVID", Signature::Float},
    {"GetCPUCount", Signature::Count},
    {"GetCoreCount", Signature::Count},
    {"GetTemp", Signature::FloatAtIndex},
};
constexpr std::size_t kMethodCount = std::size(kMethods);
static_assert(sizeof(CoreTempEntries) == kMethodCount * sizeof(void*));

/// The names that a library exports; each one's address is that of its string.
using Exports = std::set<std::string, std::less<>>;

void* addressOf(const Exports& exports, const char* name) {
    const auto found = exports.find(name);
    return found != exports.end() ? const_cast<std::string*>(&*found) : nullptr;
}

/// Any of each method's names, and names that are no more than similar.
Exports someExports(FuzzedDataProvider& input) {
    Exports exports;
    for (const CoreTempMethod& method : kMethods) {
        const auto chosen = input.ConsumeIntegral<std::uint16_t>();
        unsigned bit = 0;
        for (const std::string& name : coreTempExportNames(method)) {
            if ((chosen >> bit++ & 1U) != 0) {
                exports.insert(name);
            }
        }
    }
    while (input.remaining_bytes() > 0) {
        const CoreTempMethod& method =
            kMethods[input.ConsumeIntegralInRange<std::size_t>(0, kMethodCount - 1)];
        std::string name = coreTempExportNames(method).front();
        const auto place = input.ConsumeIntegralInRange<std::size_t>(0, name.size() - 1);
        name.replace(
            place, input.ConsumeIntegralInRange<std::size_t>(0, 3), input.ConsumeRandomLengthString(8));
        exports.insert(name);
    }
    return exports;
}

/// The first of the method's names that is exported.
void* promisedAddress(const Exports& exports, const CoreTempMethod& method) {
    for (const std::string& name : coreTempExportNames(method)) {
        if (void* const address = addressOf(exports, name.c_str())) {
            return address;
        }
    }
    return nullptr;
}

void checkName(std::string_view name) {
    require(name.size() < 64 && name.starts_with('?') && name.ends_with('Z'), "a name is a decorated one");
    require(name.find("CoreTempProxy@@") != std::string_view::npos, "a name is one of the reader class");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const Exports exports = someExports(input);
    std::multiset<std::string, std::less<>> asked;
    CoreTempEntries entries;
    const bool complete = findCoreTempEntries(entries, [&](const char* name) {
        checkName(name);
        asked.emplace(name);
        return addressOf(exports, name);
    });
    void* slots[kMethodCount];
    std::memcpy(slots, &entries, sizeof(slots));
    bool promisedComplete = true;
    for (std::size_t method = 0; method < kMethodCount; ++method) {
        void* const promised = promisedAddress(exports, kMethods[method]);
        require(slots[method] == promised, "a method is taken by the most likely of its exported names");
        promisedComplete = promisedComplete && promised != nullptr;
    }
    require(complete == promisedComplete, "a library without one of the methods is of no use");
    for (const std::string& name : asked) {
        require(asked.count(name) == 1, "no two methods have a name in common");
    }
    return 0;
}
