// The stand-in for NVIDIA's driver library: every function records its call in the virtual driver's record
// and answers what the record says. Answers are written at the offsets of the vendor's reference and not
// through the program's structures, so that a wrong structure shows.

#include "standins/nvapi/virtual_nvidia.h"

#include <array>
#include <cstring>
#include <exception>
#include <memory>

namespace {

using Standins::NvapiCall;
using Standins::VirtualNvidia;

using Status = std::int32_t;
constexpr Status kOk = 0;
constexpr Status kInvalidHandle = -8;

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

Status answer(NvapiCall call, std::array<std::int64_t, 3> arguments = {}) noexcept {
    driver()->log().add(static_cast<std::uint32_t>(call), arguments);
    return driver()->status(call);
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

// Calls `give` with the card's number when the script lets the call succeed and the handle is a card's.
template <typename Give>
Status answerAboutGpu(NvapiCall call, std::array<std::int64_t, 3> arguments, const Give& give) noexcept {
    const Status status = answer(call, arguments);
    if (status != kOk) {
        return status;
    }
    const std::int64_t gpu = arguments[0] - VirtualNvidia::gpuHandle(0);
    if (gpu < 0 || gpu >= static_cast<std::int64_t>(driver()->gpuCount())) {
        return kInvalidHandle;
    }
    give(static_cast<std::size_t>(gpu));
    return kOk;
}

Status initialize() noexcept {
    return answer(NvapiCall::Initialize);
}

Status unload() noexcept {
    return answer(NvapiCall::Unload);
}

Status getErrorMessage(Status status, char* text) noexcept {
    const Status result = answer(NvapiCall::GetErrorMessage, {status});
    if (result == kOk) {
        driver()->copyErrorText(text);
    }
    return result;
}

Status enumPhysicalGpus(void** handles, std::uint32_t* count) noexcept {
    const Status result = answer(NvapiCall::EnumPhysicalGpus);
    if (result == kOk) {
        *count = static_cast<std::uint32_t>(driver()->gpuCount());
        for (std::uint32_t i = 0; i < *count; ++i) {
            handles[i] = reinterpret_cast<void*>(VirtualNvidia::gpuHandle(i));
        }
    }
    return result;
}

Status gpuGetFullName(void* gpu, char* name) noexcept {
    return answerAboutGpu(NvapiCall::GpuGetFullName, {number(gpu)}, [name](std::size_t index) {
        driver()->copyName(index, name);
    });
}

Status gpuGetDynamicPstatesInfoEx(void* gpu, void* states) noexcept {
    return answerAboutGpu(
        NvapiCall::GpuGetDynamicPstatesInfoEx, {number(gpu), wordAt(states, 0)}, [states](std::size_t index) {
            setWordAt(states, 8, 1);
            setWordAt(states, 12, driver()->figures(index).loadPercent);
        });
}

Status gpuGetThermalSettings(void* gpu, std::uint32_t sensor, void* settings) noexcept {
    return answerAboutGpu(NvapiCall::GpuGetThermalSettings,
                          {number(gpu), wordAt(settings, 0), sensor},
                          [settings](std::size_t index) {
                              const std::int32_t temperature = driver()->figures(index).temperature;
                              setWordAt(settings, 4, 1);
                              setWordAt(settings, 20, static_cast<std::uint32_t>(temperature));
                          });
}

Status gpuGetMemoryInfo(void* gpu, void* info) noexcept {
    return answerAboutGpu(
        NvapiCall::GpuGetMemoryInfo, {number(gpu), wordAt(info, 0)}, [info](std::size_t index) {
            setWordAt(info, 8, driver()->figures(index).memoryKB);
            setWordAt(info, 20, driver()->figures(index).freeMemoryKB);
        });
}

Status gpuGetAllClockFrequencies(void* gpu, void* frequencies) noexcept {
    return answerAboutGpu(NvapiCall::GpuGetAllClockFrequencies,
                          {number(gpu), wordAt(frequencies, 0), wordAt(frequencies, 4)},
                          [frequencies](std::size_t index) {
                              setWordAt(frequencies, 8, 1);
                              setWordAt(frequencies, 12, driver()->figures(index).coreClockKHz);
                          });
}

struct Function {
    std::uint32_t id;
    NvapiCall call;
    void* address;
};

template <typename Type>
void* untyped(Type* function) noexcept {
    return reinterpret_cast<void*>(function);
}

// The ids once more and not from the program's header, for the same reason as the offsets.
const Function kFunctions[] = {
    {0x0150E828, NvapiCall::Initialize, untyped(initialize)},
    {0xD22BDD7E, NvapiCall::Unload, untyped(unload)},
    {0x6C2D048C, NvapiCall::GetErrorMessage, untyped(getErrorMessage)},
    {0xE5AC921F, NvapiCall::EnumPhysicalGpus, untyped(enumPhysicalGpus)},
    {0xCEEE8E9F, NvapiCall::GpuGetFullName, untyped(gpuGetFullName)},
    {0x60DED2ED, NvapiCall::GpuGetDynamicPstatesInfoEx, untyped(gpuGetDynamicPstatesInfoEx)},
    {0xE3640A56, NvapiCall::GpuGetThermalSettings, untyped(gpuGetThermalSettings)},
    {0x07F9B368, NvapiCall::GpuGetMemoryInfo, untyped(gpuGetMemoryInfo)},
    {0xDCB616C3, NvapiCall::GpuGetAllClockFrequencies, untyped(gpuGetAllClockFrequencies)},
};

}  // namespace

extern "C" void* nvapi_QueryInterface(std::uint32_t id) noexcept {
    for (const Function& function : kFunctions) {
        if (function.id == id && driver() != nullptr && !driver()->isMissing(function.call)) {
            return function.address;
        }
    }
    return nullptr;
}
