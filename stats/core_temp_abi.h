#pragma once

#include <cstddef>
#include <cstdint>

/// Core Temp's two interfaces on x64. The shared record's members and their order are on the maker's page for
/// developers; the offsets follow from its alignment of four bytes. The reader class and the names of the
/// mappings are not documented there: the class is reached by its decorated names (see core_temp_names.h),
/// and the calls below are what those names say.
namespace CoreTemp {

inline constexpr std::uint32_t kMaxCores = 256;
inline constexpr std::uint32_t kMaxCpus = 128;
inline constexpr std::size_t kNameLength = 100;

/// The original record, with which the extended one begins as well. Flags are 0 or 1.
struct SharedRecord {
    /// Percent.
    std::uint32_t uiLoad[kMaxCores];
    std::uint32_t uiTjMax[kMaxCpus];
    /// Cores of each CPU: core k of CPU c stands at index k + uiCoreCnt * c.
    std::uint32_t uiCoreCnt;
    std::uint32_t uiCPUCnt;
    float fTemp[kMaxCores];
    /// Volts.
    float fVID;
    /// MHz.
    float fCPUSpeed;
    float fFSBSpeed;
    float fMultiplier;
    char sCPUName[kNameLength];
    std::uint8_t ucFahrenheit;
    std::uint8_t ucDeltaToTjMax;
};

static_assert(sizeof(SharedRecord) == 2688);
static_assert(offsetof(SharedRecord, uiCoreCnt) == 1536);
static_assert(offsetof(SharedRecord, uiCPUCnt) == 1540);
static_assert(offsetof(SharedRecord, fTemp) == 1544);
static_assert(offsetof(SharedRecord, fVID) == 2568);
static_assert(offsetof(SharedRecord, fCPUSpeed) == 2572);
static_assert(offsetof(SharedRecord, fFSBSpeed) == 2576);
static_assert(offsetof(SharedRecord, fMultiplier) == 2580);
static_assert(offsetof(SharedRecord, sCPUName) == 2584);
static_assert(offsetof(SharedRecord, ucFahrenheit) == 2684);

/// The record without the padding after its last member: a section may end here.
inline constexpr std::size_t kSharedRecordBytes =
    offsetof(SharedRecord, ucDeltaToTjMax) + sizeof(SharedRecord::ucDeltaToTjMax);
static_assert(kSharedRecordBytes == 2686);

/// The extended record (version 2) begins like the original and appends what this program does not need.
inline constexpr wchar_t kExtendedMapping[] = L"CoreTempMappingObjectEx";
inline constexpr wchar_t kOriginalMapping[] = L"CoreTempMappingObject";
/// The same of a Core Temp that was started in session 0, by a service or a scheduled task.
inline constexpr wchar_t kGlobalExtendedMapping[] = L"Global\\CoreTempMappingObjectEx";
inline constexpr wchar_t kGlobalOriginalMapping[] = L"Global\\CoreTempMappingObject";

inline constexpr wchar_t kLibraryFile[] = L"GetCoreTempInfo.dll";

/// Room for one object of the reader class. Its real size is unknown: this is ample for a copy of the
/// extended record, a few handles and a message.
inline constexpr std::size_t kProxyBytes = std::size_t{16} * 1024;
inline constexpr std::size_t kProxyAlignment = 16;

// The reader class's functions; `self` is the object.

using Construct = void*(void* self);
using Destruct = void(void* self);
using GetBool = bool(void* self);
using GetFloat = float(const void* self);
using GetCount = unsigned(const void* self);
using GetText = const char*(const void* self);
using GetFloatAt = float(const void* self, int index);

static_assert(sizeof(bool) == 1, "the library returns one byte: only AL is defined");
static_assert(sizeof(unsigned) == 4 && sizeof(int) == 4 && sizeof(float) == 4);

}  // namespace CoreTemp
