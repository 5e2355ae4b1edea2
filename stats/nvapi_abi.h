#pragma once

#include <cstddef>
#include <cstdint>

/// NVIDIA's NVAPI on x64, as the maker's reference describes it: one convention, 32-bit status, structures of
/// 32-bit members that begin with a version word. Every function but the first is reached through
/// nvapi_QueryInterface by its id.
namespace Nvapi {

inline constexpr wchar_t kLibraryFile[] = L"nvapi64.dll";

/// The one exported name: the address of the function with that id, or null when the driver lacks it.
inline constexpr char kQueryInterfaceName[] = "nvapi_QueryInterface";
using QueryInterface = void*(std::uint32_t id);

using Status = std::int32_t;
inline constexpr Status kOk = 0;
inline constexpr Status kLibraryNotFound = -2;
inline constexpr Status kNoImplementation = -3;
inline constexpr Status kApiNotInitialized = -4;
inline constexpr Status kDeviceNotFound = -6;
inline constexpr Status kInvalidHandle = -8;
/// A change of the displays or cards has made the handle stale: all are to be enumerated anew.
inline constexpr Status kHandleInvalidated = -10;

inline constexpr std::size_t kMaxPhysicalGpus = 64;
inline constexpr std::size_t kShortStringLength = 64;

/// A physical graphics card; null is none. Good until a call returns kHandleInvalidated.
using GpuHandle = void*;

/// NV_GPU_DYNAMIC_PSTATES_INFO_EX, version 1. The first domain is the graphics engine.
struct DynamicPstates {
    static constexpr std::size_t kDomains = 8;
    static constexpr std::uint32_t kVersion = 0x0001'0048;

    struct Domain {
        std::uint32_t present;
        /// Percent.
        std::uint32_t percentage;
    };

    std::uint32_t version;
    std::uint32_t flags;
    Domain utilization[kDomains];
};

static_assert(sizeof(DynamicPstates) == 72);
static_assert(offsetof(DynamicPstates, utilization[0].percentage) == 12);

/// NV_GPU_THERMAL_SETTINGS, version 2.
struct ThermalSettings {
    static constexpr std::size_t kSensors = 3;
    static constexpr std::uint32_t kVersion = 0x0002'0044;

    struct Sensor {
        std::int32_t controller;
        std::int32_t defaultMinTemp;
        std::int32_t defaultMaxTemp;
        /// Degrees Celsius.
        std::int32_t currentTemp;
        std::int32_t target;
    };

    std::uint32_t version;
    std::uint32_t count;
    Sensor sensor[kSensors];
};

static_assert(sizeof(ThermalSettings) == 68);
static_assert(offsetof(ThermalSettings, sensor[0].currentTemp) == 20);

/// NV_DISPLAY_DRIVER_MEMORY_INFO, version 3. Sizes in kB.
struct MemoryInfo {
    static constexpr std::uint32_t kVersion = 0x0003'0020;

    std::uint32_t version;
    std::uint32_t dedicatedVideoMemory;
    std::uint32_t availableDedicatedVideoMemory;
    std::uint32_t systemVideoMemory;
    std::uint32_t sharedSystemMemory;
    std::uint32_t curAvailableDedicatedVideoMemory;
    std::uint32_t dedicatedVideoMemoryEvictionsSize;
    std::uint32_t dedicatedVideoMemoryEvictionCount;
};

static_assert(sizeof(MemoryInfo) == 32);
static_assert(offsetof(MemoryInfo, availableDedicatedVideoMemory) == 8);
static_assert(offsetof(MemoryInfo, curAvailableDedicatedVideoMemory) == 20);

/// NV_GPU_CLOCK_FREQUENCIES, version 3 (the layout of version 2). The first domain is the graphics clock.
struct ClockFrequencies {
    static constexpr std::size_t kDomains = 32;
    static constexpr std::uint32_t kVersion = 0x0003'0108;
    /// Which clocks are asked for: the low four bits of `clockType`; the other bits are reserved and 0.
    static constexpr std::uint32_t kCurrentClocks = 0;

    struct Domain {
        std::uint32_t present;
        /// kHz.
        std::uint32_t frequency;
    };

    std::uint32_t version;
    std::uint32_t clockType;
    Domain domain[kDomains];
};

static_assert(sizeof(ClockFrequencies) == 264);
static_assert(offsetof(ClockFrequencies, clockType) == 4);
static_assert(offsetof(ClockFrequencies, domain[0].frequency) == 12);

static_assert(DynamicPstates::kVersion == (sizeof(DynamicPstates) | 1 << 16));
static_assert(ThermalSettings::kVersion == (sizeof(ThermalSettings) | 2 << 16));
static_assert(MemoryInfo::kVersion == (sizeof(MemoryInfo) | 3 << 16));
static_assert(ClockFrequencies::kVersion == (sizeof(ClockFrequencies) | 3 << 16));
static_assert(sizeof(GpuHandle) == 8);

// Ids and types of the functions. The ids are the published ones of NVAPI's interface table.

inline constexpr std::uint32_t kInitializeId = 0x0150'E828;
inline constexpr std::uint32_t kUnloadId = 0xD22B'DD7E;
inline constexpr std::uint32_t kGetErrorMessageId = 0x6C2D'048C;
inline constexpr std::uint32_t kEnumPhysicalGpusId = 0xE5AC'921F;
inline constexpr std::uint32_t kGpuGetFullNameId = 0xCEEE'8E9F;
inline constexpr std::uint32_t kGpuGetDynamicPstatesInfoExId = 0x60DE'D2ED;
inline constexpr std::uint32_t kGpuGetThermalSettingsId = 0xE364'0A56;
inline constexpr std::uint32_t kGpuGetMemoryInfoId = 0x07F9'B368;
inline constexpr std::uint32_t kGpuGetAllClockFrequenciesId = 0xDCB6'16C3;

/// Counted: one Unload for each Initialize.
using Initialize = Status();
using Unload = Status();
/// `text`: kShortStringLength characters.
using GetErrorMessage = Status(Status status, char* text);
/// `handles`: kMaxPhysicalGpus of them.
using EnumPhysicalGpus = Status(GpuHandle* handles, std::uint32_t* count);
/// `name`: kShortStringLength characters.
using GpuGetFullName = Status(GpuHandle gpu, char* name);
using GpuGetDynamicPstatesInfoEx = Status(GpuHandle gpu, DynamicPstates* states);
using GpuGetThermalSettings = Status(GpuHandle gpu, std::uint32_t sensorIndex, ThermalSettings* settings);
using GpuGetMemoryInfo = Status(GpuHandle gpu, MemoryInfo* info);
using GpuGetAllClockFrequencies = Status(GpuHandle gpu, ClockFrequencies* frequencies);

}  // namespace Nvapi
