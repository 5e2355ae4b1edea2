// The stand-in for NVIDIA's driver library: every function records its call in the virtual driver's record
// and answers what the record says. Answers are written at the offsets of the vendor's reference and not
// through the program's structures, so that a wrong structure shows.

#include "standins/nvapi/virtual_nvidia.h"

#include <array>
#include <atomic>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>

namespace {

using Standins::NvapiCall;
using Standins::VirtualNvidia;

using Status = std::int32_t;
constexpr Status kOk = 0;
constexpr Status kNotInitialized = -4;
constexpr Status kInvalidHandle = -8;
constexpr Status kHandleInvalidated = -10;

// Per process, as NVAPI's own.
std::atomic<bool> initializeCalled{false};
std::atomic<int> initializations{0};
/// The driver's life in which the first of these was.
std::atomic<std::uint32_t> initializedLife{0};

// Null when the record cannot be opened: the library then behaves like one that implements nothing. Opened by
// the first call and not while the library is loaded, when the loader's lock is held.
VirtualNvidia* driver() noexcept {
    static const std::unique_ptr<VirtualNvidia> instance = []() noexcept -> std::unique_ptr<VirtualNvidia> {
        try {
            return std::make_unique<VirtualNvidia>();
        } catch (const std::exception&) {
            return nullptr;
        }
    }();
    return instance.get();
}

Status answer(NvapiCall call, const Standins::CallArguments& arguments = {}) noexcept {
    driver()->log().add(static_cast<std::uint32_t>(call), arguments);
    return driver()->status(call);
}

bool handsOut(Status status) noexcept {
    return status == kOk || driver()->writesBeforeItFails();
}

std::int64_t number(const void* handle) noexcept {
    return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(handle));
}

std::uint32_t wordAt(const void* structure, std::size_t offset) noexcept {
    std::uint32_t word;
    std::memcpy(&word, static_cast<const char*>(structure) + offset, sizeof(word));
    return word;
}

void setWordAt(void* structure, std::size_t offset, std::uint32_t word) noexcept {
    std::memcpy(static_cast<char*>(structure) + offset, &word, sizeof(word));
}

// Functions are given out in two editions, one for every other life of the driver, so that one of a former
// life is known.
template <unsigned edition>
bool isOfThisLife() noexcept {
    const std::uint32_t life = driver()->driverLife();
    return initializedLife == life && life % 2 == edition;
}

// Calls `give` with the card's number when the script lets the call hand something out; a handle that is no
// card's makes it fail.
template <unsigned edition, typename Give>
Status answerAboutGpu(NvapiCall call, const Standins::CallArguments& arguments, const Give& give) noexcept {
    Status status = answer(call, arguments);
    if (initializations == 0) {
        return kNotInitialized;
    }
    if (!isOfThisLife<edition>()) {
        return driver()->formerLifeStatus();
    }
    const std::optional<std::size_t> gpu = driver()->gpuOf(arguments[0]);
    if (!gpu && status == kOk) {
        status = driver()->isStale(arguments[0]) ? kHandleInvalidated : kInvalidHandle;
    }
    if (handsOut(status)) {
        give(gpu.value_or(0));
    }
    return status;
}

Status initialize() noexcept {
    const Status result = answer(NvapiCall::Initialize);
    initializeCalled = true;
    if (result == kOk && ++initializations == 1) {
        initializedLife = driver()->driverLife();
    }
    return result;
}

Status unload() noexcept {
    const Status result = answer(NvapiCall::Unload);
    if (initializations == 0) {
        return kNotInitialized;
    }
    --initializations;
    return result;
}

Status getErrorMessage(Status status, char* text) noexcept {
    const Status result = answer(NvapiCall::GetErrorMessage, {status});
    if (handsOut(result)) {
        driver()->copyErrorText(text);
    }
    return result;
}

template <unsigned edition>
Status enumPhysicalGpus(void** handles, std::uint32_t* count) noexcept {
    const Status result = answer(NvapiCall::EnumPhysicalGpus);
    if (initializations == 0) {
        return kNotInitialized;
    }
    if (!isOfThisLife<edition>()) {
        return driver()->formerLifeStatus();
    }
    if (result == kOk) {
        driver()->enumerate();
    }
    if (handsOut(result)) {
        *count = static_cast<std::uint32_t>(driver()->gpuCount());
        for (std::uint32_t i = 0; i < *count; ++i) {
            handles[i] = reinterpret_cast<void*>(driver()->gpuHandle(i));
        }
    }
    return result;
}

template <unsigned edition>
Status gpuGetFullName(void* gpu, char* name) noexcept {
    return answerAboutGpu<edition>(NvapiCall::GpuGetFullName, {number(gpu)}, [name](std::size_t index) {
        driver()->copyName(index, name);
    });
}

template <unsigned edition>
Status gpuGetDynamicPstatesInfoEx(void* gpu, void* states) noexcept {
    return answerAboutGpu<edition>(
        NvapiCall::GpuGetDynamicPstatesInfoEx, {number(gpu), wordAt(states, 0)}, [states](std::size_t index) {
            setWordAt(states, 8, 1);
            setWordAt(states, 12, driver()->figures(index).loadPercent);
        });
}

template <unsigned edition>
Status gpuGetThermalSettings(void* gpu, std::uint32_t sensor, void* settings) noexcept {
    return answerAboutGpu<edition>(NvapiCall::GpuGetThermalSettings,
                                   {number(gpu), wordAt(settings, 0), sensor},
                                   [settings](std::size_t index) {
                                       const std::int32_t temperature = driver()->figures(index).temperature;
                                       setWordAt(settings, 4, 1);
                                       setWordAt(settings, 20, static_cast<std::uint32_t>(temperature));
                                   });
}

template <unsigned edition>
Status gpuGetMemoryInfo(void* gpu, void* info) noexcept {
    return answerAboutGpu<edition>(
        NvapiCall::GpuGetMemoryInfo, {number(gpu), wordAt(info, 0)}, [info](std::size_t index) {
            setWordAt(info, 8, driver()->figures(index).memoryKB);
            setWordAt(info, 20, driver()->figures(index).freeMemoryKB);
        });
}

template <unsigned edition>
Status gpuGetAllClockFrequencies(void* gpu, void* frequencies) noexcept {
    return answerAboutGpu<edition>(NvapiCall::GpuGetAllClockFrequencies,
                                   {number(gpu), wordAt(frequencies, 0), wordAt(frequencies, 4)},
                                   [frequencies](std::size_t index) {
                                       setWordAt(frequencies, 8, 1);
                                       setWordAt(frequencies, 12, driver()->figures(index).coreClockKHz);
                                   });
}

struct Function {
    std::uint32_t id;
    NvapiCall call;
    /// By edition.
    void* addresses[2];
};

template <typename Type>
void* untyped(Type* function) noexcept {
    return reinterpret_cast<void*>(function);
}

// The ids once more and not from the program's header, for the same reason as the offsets.
const Function kFunctions[] = {
    {0x0150E828, NvapiCall::Initialize, {untyped(initialize), untyped(initialize)}},
    {0xD22BDD7E, NvapiCall::Unload, {untyped(unload), untyped(unload)}},
    {0x6C2D048C, NvapiCall::GetErrorMessage, {untyped(getErrorMessage), untyped(getErrorMessage)}},
    {0xE5AC921F, NvapiCall::EnumPhysicalGpus, {untyped(enumPhysicalGpus<0>), untyped(enumPhysicalGpus<1>)}},
    {0xCEEE8E9F, NvapiCall::GpuGetFullName, {untyped(gpuGetFullName<0>), untyped(gpuGetFullName<1>)}},
    {0x60DED2ED,
     NvapiCall::GpuGetDynamicPstatesInfoEx,
     {untyped(gpuGetDynamicPstatesInfoEx<0>), untyped(gpuGetDynamicPstatesInfoEx<1>)}},
    {0xE3640A56,
     NvapiCall::GpuGetThermalSettings,
     {untyped(gpuGetThermalSettings<0>), untyped(gpuGetThermalSettings<1>)}},
    {0x07F9B368, NvapiCall::GpuGetMemoryInfo, {untyped(gpuGetMemoryInfo<0>), untyped(gpuGetMemoryInfo<1>)}},
    {0xDCB616C3,
     NvapiCall::GpuGetAllClockFrequencies,
     {untyped(gpuGetAllClockFrequencies<0>), untyped(gpuGetAllClockFrequencies<1>)}},
};

// What a driver need not tell before Initialize, this one does not tell.
bool isTold(NvapiCall call) noexcept {
    switch (call) {
        case NvapiCall::Initialize:
            return true;
        case NvapiCall::Unload:
        case NvapiCall::GetErrorMessage:
            return initializeCalled;
        default:
            return initializations > 0;
    }
}

}  // namespace

extern "C" void* nvapi_QueryInterface(std::uint32_t id) noexcept {
    for (const Function& function : kFunctions) {
        if (function.id == id && isTold(function.call) && driver() != nullptr &&
            !driver()->isMissing(function.call)) {
            return function.addresses[initializedLife % 2];
        }
    }
    return nullptr;
}
