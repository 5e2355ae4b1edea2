#pragma once

#include <cstddef>

/// AMD's ADL2 on x64, as the maker's reference describes it: exported C names, one convention, int results.
namespace Adl {

inline constexpr wchar_t kLibraryFile[] = L"atiadlxx.dll";

/// Success. Everything else counts as failure, positive values with qualified meanings included.
inline constexpr int kOk = 0;

inline constexpr std::size_t kMaxPath = 256;

/// One client's session; null is none.
using Context = void*;

/// Called by the library for memory that it hands over to the caller.
using MallocCallback = void*(int bytes);

/// What ADL2_Main_Control_Create is to enumerate: only adapters that are present and enabled.
inline constexpr int kConnectedAdaptersOnly = 1;

struct AdapterInfo {
    int iSize;
    int iAdapterIndex;
    char strUDID[kMaxPath];
    int iBusNumber;
    int iDeviceNumber;
    int iFunctionNumber;
    int iVendorID;
    /// In the ANSI code page.
    char strAdapterName[kMaxPath];
    char strDisplayName[kMaxPath];
    int iPresent;
    int iExist;
    char strDriverPath[kMaxPath];
    char strDriverPathExt[kMaxPath];
    char strPNPString[kMaxPath];
    int iOSDisplayIndex;
};

static_assert(sizeof(AdapterInfo) == 1572);
static_assert(offsetof(AdapterInfo, strAdapterName) == 280);
static_assert(offsetof(AdapterInfo, strDisplayName) == 536);
static_assert(offsetof(AdapterInfo, iOSDisplayIndex) == 1568);

/// The reference lists these members by name, not in their order; the order is that of several independent
/// public declarations, which agree. There is no size or version member.
struct ADLOD6CurrentStatus {
    /// In units of 10 kHz.
    int iEngineClock;
    int iMemoryClock;
    int iActivityPercent;
    int iCurrentPerformanceLevel;
    int iCurrentBusSpeed;
    int iCurrentBusLanes;
    int iMaximumBusLanes;
    int iExtValue;
    int iExtMask;
};

static_assert(sizeof(ADLOD6CurrentStatus) == 36);
static_assert(offsetof(ADLOD6CurrentStatus, iEngineClock) == 0);
static_assert(offsetof(ADLOD6CurrentStatus, iActivityPercent) == 8);
static_assert(sizeof(Context) == 8 && sizeof(int) == 4);

// Function types, named like the exports.

using ADL2_Main_Control_Create = int(MallocCallback* allocate, int enumConnectedAdapters, Context* context);
using ADL2_Main_Control_Destroy = int(Context context);
using ADL2_Adapter_NumberOfAdapters_Get = int(Context context, int* count);
/// `infos` becomes an array of as many entries as there are adapters, allocated through the callback: the
/// caller frees it.
using ADL2_Adapter_AdapterInfoX2_Get = int(Context context, AdapterInfo** infos);
using ADL2_Adapter_Active_Get = int(Context context, int adapter, int* active);
/// Thousandths of a degree Celsius.
using ADL2_Overdrive6_Temperature_Get = int(Context context, int adapter, int* temperature);
using ADL2_Overdrive6_CurrentStatus_Get = int(Context context, int adapter, ADLOD6CurrentStatus* status);

}  // namespace Adl
