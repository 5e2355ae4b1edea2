// The stand-in for Core Temp's reader library: every function records its call in the virtual Core Temp's
// record and answers what the record says. The .def files, one per variant of the library, export the
// functions under the decorated names of the reader class's members.

#include "standins/core_temp/virtual_core_temp.h"

#include <cstring>
#include <exception>
#include <memory>

namespace {

using Standins::CoreTempCall;
using Standins::VirtualCoreTemp;

// As large as the vendor's object may well be: the extended record and something more.
constexpr std::size_t kObjectBytes = 6000;
constexpr int kObjectMark = 0xC7;

// Null when the record cannot be opened: Core Temp is not running then. Opened by the first call and not
// while the library is loaded, when the loader's lock is held.
VirtualCoreTemp* coreTemp() noexcept {
    static const std::unique_ptr<VirtualCoreTemp> instance =
        []() noexcept -> std::unique_ptr<VirtualCoreTemp> {
        try {
            return std::make_unique<VirtualCoreTemp>();
        } catch (const std::exception&) {
            return nullptr;
        }
    }();
    return instance.get();
}

// Null as well when the record cannot be opened.
VirtualCoreTemp* enter(CoreTempCall call, const void* self, int index = 0) noexcept {
    if (coreTemp() != nullptr) {
        const auto object = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(self));
        coreTemp()->log().add(static_cast<std::uint32_t>(call), {object, index});
    }
    return coreTemp();
}

}  // namespace

extern "C" {

void* standin_Constructor(void* self) noexcept {
    enter(CoreTempCall::Constructor, self);
    std::memset(self, kObjectMark, kObjectBytes);
    return self;
}

void standin_Destructor(void* self) noexcept {
    enter(CoreTempCall::Destructor, self);
}

bool standin_GetData(void* self) noexcept {
    const VirtualCoreTemp* const source = enter(CoreTempCall::GetData, self);
    return source != nullptr && source->isRunning();
}

bool standin_IsFahrenheit(void* self) noexcept {
    const VirtualCoreTemp* const source = enter(CoreTempCall::IsFahrenheit, self);
    return source != nullptr ? source->isFahrenheit() : false;
}

// The record's field, and after it more text as if it were the next member.
const char* standin_GetCPUName(const void* self) noexcept {
    const VirtualCoreTemp* const source = enter(CoreTempCall::GetCPUName, self);
    static char name[VirtualCoreTemp::kNameLength + 8];
    std::memcpy(name + VirtualCoreTemp::kNameLength, "beyond", 7);
    if (source == nullptr || source->nameIsNull()) {
        return nullptr;
    }
    source->copyName(name);
    return name;
}

float standin_GetCPUSpeed(const void* self) noexcept {
    const VirtualCoreTemp* const source = enter(CoreTempCall::GetCPUSpeed, self);
    return source != nullptr ? source->speedMHz() : 0.0F;
}

float standin_GetFSBSpeed(const void* self) noexcept {
    const VirtualCoreTemp* const source = enter(CoreTempCall::GetFSBSpeed, self);
    return source != nullptr ? source->busSpeedMHz() : 0.0F;
}

float standin_GetMultiplier(const void* self) noexcept {
    const VirtualCoreTemp* const source = enter(CoreTempCall::GetMultiplier, self);
    return source != nullptr ? source->multiplier() : 0.0F;
}

float standin_GetVID(const void* self) noexcept {
    const VirtualCoreTemp* const source = enter(CoreTempCall::GetVID, self);
    return source != nullptr ? source->vidVolts() : 0.0F;
}

unsigned standin_GetCPUCount(const void* self) noexcept {
    const VirtualCoreTemp* const source = enter(CoreTempCall::GetCPUCount, self);
    return source != nullptr ? source->cpuCount() : 0;
}

unsigned standin_GetCoreCount(const void* self) noexcept {
    const VirtualCoreTemp* const source = enter(CoreTempCall::GetCoreCount, self);
    return source != nullptr ? source->coreCount() : 0;
}

float standin_GetTemp(const void* self, int index) noexcept {
    const VirtualCoreTemp* const source = enter(CoreTempCall::GetTemp, self, index);
    return source != nullptr ? source->temperature(index) : 0.0F;
}

}  // extern "C"
