// The stand-in for AMD's driver library: every export records its call in the virtual driver's record and
// answers what the record says. Answers are written at the offsets of the vendor's reference and not through
// the program's structures, so that a wrong structure shows. The .def files, one per variant of the library,
// name the exports.

#include "standins/adl/virtual_radeon.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <exception>
#include <memory>

namespace {

using Standins::AdlCall;
using Standins::RadeonFigures;
using Standins::VirtualRadeon;

constexpr int kOk = 0;
constexpr int kError = -1;
constexpr int kInvalidAdapter = -5;

constexpr std::size_t kAdapterInfoBytes = 1572;
constexpr std::size_t kAdapterNameOffset = 280;

using MallocCallback = void*(int bytes);

std::atomic<std::int64_t> contextsCreated{0};
std::atomic<MallocCallback*> mallocCallback{nullptr};

// Null when the record cannot be opened: every call fails then. Opened by the first call and not while the
// library is loaded, when the loader's lock is held.
VirtualRadeon* driver() noexcept {
    static const std::unique_ptr<VirtualRadeon> instance = []() noexcept -> std::unique_ptr<VirtualRadeon> {
        try {
            return std::make_unique<VirtualRadeon>();
        } catch (const std::exception&) {
            return nullptr;
        }
    }();
    return instance.get();
}

int answer(AdlCall call, std::int64_t first, std::int64_t second = 0) noexcept {
    if (driver() == nullptr) {
        return kError;
    }
    driver()->log().add(static_cast<std::uint32_t>(call), {first, second});
    return driver()->status(call);
}

bool handsOut(int status) noexcept {
    return status == kOk || (driver() != nullptr && driver()->writesBeforeItFails());
}

std::int64_t number(const void* context) noexcept {
    return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(context));
}

void setIntAt(void* structure, std::size_t offset, int value) noexcept {
    std::memcpy(static_cast<char*>(structure) + offset, &value, sizeof(value));
}

bool hasAdapter(int adapter) noexcept {
    return adapter >= 0 && adapter < driver()->adapterCount() &&
           adapter < static_cast<int>(VirtualRadeon::kMaxAdapters);
}

// Calls `give` with the adapter's figures when the script lets the call hand out and the adapter is there.
template <typename Give>
int answerAboutAdapter(AdlCall call, const void* context, int adapter, const Give& give) noexcept {
    const int status = answer(call, number(context), adapter);
    if (!handsOut(status)) {
        return status;
    }
    if (!hasAdapter(adapter)) {
        return kInvalidAdapter;
    }
    give(driver()->figures(static_cast<std::size_t>(adapter)));
    return status;
}

}  // namespace

extern "C" {

int ADL2_Main_Control_Create(MallocCallback* allocate, int enumConnectedAdapters, void** context) noexcept {
    const int status = answer(AdlCall::MainControlCreate, allocate != nullptr ? 1 : 0, enumConnectedAdapters);
    if (handsOut(status)) {
        mallocCallback = allocate;
        *context = reinterpret_cast<void*>(++contextsCreated);
    }
    return status;
}

int ADL2_Main_Control_Destroy(void* context) noexcept {
    return answer(AdlCall::MainControlDestroy, number(context));
}

int ADL2_Adapter_NumberOfAdapters_Get(void* context, int* count) noexcept {
    const int status = answer(AdlCall::AdapterNumberOfAdaptersGet, number(context));
    if (handsOut(status)) {
        *count = driver()->adapterCount();
    }
    return status;
}

int ADL2_Adapter_AdapterInfoX2_Get(void* context, void** infos) noexcept {
    const int status = answer(AdlCall::AdapterAdapterInfoX2Get, number(context));
    if (!handsOut(status)) {
        return status;
    }
    const int count = std::clamp(driver()->adapterCount(), 0, static_cast<int>(VirtualRadeon::kMaxAdapters));
    const std::size_t bytes = kAdapterInfoBytes * static_cast<std::size_t>(count);
    auto* const array = static_cast<char*>(mallocCallback.load()(static_cast<int>(bytes)));
    if (array != nullptr) {
        std::memset(array, 0, bytes);
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            char* const info = array + i * kAdapterInfoBytes;
            setIntAt(info, 0, static_cast<int>(kAdapterInfoBytes));
            setIntAt(info, 4, static_cast<int>(i));
            driver()->copyName(i, info + kAdapterNameOffset);
            // What follows the name is no zero, so that a name without terminator runs on.
            std::memset(info + kAdapterNameOffset + VirtualRadeon::kNameLength, 'x', 1);
        }
    }
    *infos = array;
    return status;
}

int ADL2_Adapter_Active_Get(void* context, int adapter, int* active) noexcept {
    return answerAboutAdapter(
        AdlCall::AdapterActiveGet, context, adapter, [active](const RadeonFigures&) { *active = 1; });
}

int ADL2_Overdrive6_Temperature_Get(void* context, int adapter, int* temperature) noexcept {
    return answerAboutAdapter(
        AdlCall::Overdrive6TemperatureGet, context, adapter, [temperature](const RadeonFigures& figures) {
            *temperature = figures.temperatureMillidegrees;
        });
}

int ADL2_Overdrive6_CurrentStatus_Get(void* context, int adapter, void* currentStatus) noexcept {
    return answerAboutAdapter(
        AdlCall::Overdrive6CurrentStatusGet, context, adapter, [currentStatus](const RadeonFigures& figures) {
            setIntAt(currentStatus, 0, figures.engineClock);
            setIntAt(currentStatus, 8, figures.activityPercent);
        });
}

}  // extern "C"
