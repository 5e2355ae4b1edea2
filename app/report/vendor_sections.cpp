#include <windows.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "app/report/library_findings.h"
#include "app/report/sections.h"
#include "app/report/system_facts.h"
#include "framework/core/exported_function.h"
#include "framework/core/unique_resource.h"
#include "stats/adl_entries.h"
#include "stats/core_temp_library.h"
#include "stats/core_temp_reading.h"
#include "stats/gpu_amd.h"
#include "stats/gpu_nvidia.h"
#include "stats/nvapi_entries.h"
#include "stats/nvapi_status.h"

namespace {

struct NvapiFunction {
    std::uint32_t id;
    const wchar_t* name;
};

constexpr NvapiFunction kNvapiFunctions[] = {
    {Nvapi::kInitializeId, L"NvAPI_Initialize"},
    {Nvapi::kUnloadId, L"NvAPI_Unload"},
    {Nvapi::kGetErrorMessageId, L"NvAPI_GetErrorMessage"},
    {Nvapi::kEnumPhysicalGpusId, L"NvAPI_EnumPhysicalGPUs"},
    {Nvapi::kGpuGetFullNameId, L"NvAPI_GPU_GetFullName"},
    {Nvapi::kGpuGetDynamicPstatesInfoExId, L"NvAPI_GPU_GetDynamicPstatesInfoEx"},
    {Nvapi::kGpuGetThermalSettingsId, L"NvAPI_GPU_GetThermalSettings"},
    {Nvapi::kGpuGetMemoryInfoId, L"NvAPI_GPU_GetMemoryInfo"},
    {Nvapi::kGpuGetAllClockFrequenciesId, L"NvAPI_GPU_GetAllClockFrequencies"},
};

struct AdlResult {
    int result;
    const wchar_t* name;
};

/// The library itself has no texts.
constexpr AdlResult kAdlResults[] = {
    {-1, L"ADL_ERR"},
    {-3, L"ADL_ERR_INVALID_PARAM"},
    {-5, L"ADL_ERR_INVALID_ADL_IDX"},
    {-10, L"ADL_ERR_DISABLED_ADAPTER"},
    {-11, L"ADL_ERR_INVALID_CALLBACK"},
};

std::wstring nvapiFunctionText(std::uint32_t id) {
    const auto* const found = std::find_if(std::begin(kNvapiFunctions),
                                           std::end(kNvapiFunctions),
                                           [id](const NvapiFunction& function) { return function.id == id; });
    return (found != std::end(kNvapiFunctions) ? found->name : std::wstring()) + L" (id " + hexText(id) +
           L")";
}

std::wstring adlResultText(int result) {
    const auto* const found =
        std::find_if(std::begin(kAdlResults), std::end(kAdlResults), [result](const AdlResult& entry) {
            return entry.result == result;
        });
    return L"fails, result " + std::to_wstring(result) +
           (found != std::end(kAdlResults) ? L": " + std::wstring(found->name) : std::wstring());
}

std::wstring orNothing(const std::wstring& text) {
    return text.empty() ? L"none" : text;
}

/// A figure with its unit, or that there is none.
std::wstring figure(bool valid, std::int64_t number, const wchar_t* unit) {
    return valid ? std::to_wstring(number) + unit : L"no figure";
}

void reportStats(ReportWriter& writer, const GpuStats& stats) {
    writer.value(L"Load", figure(stats.loadValid, stats.load, L" %"));
    writer.value(L"Temperature", figure(stats.temperatureValid, stats.temperature, L" \u00B0C"));
    writer.value(L"Video memory in use", figure(stats.memoryLoadValid, stats.memoryLoad, L" %"));
    writer.value(L"Core clock", figure(stats.coreClockValid, stats.coreClock, L" kHz"));
}

// Core Temp

std::wstring mappingText(const wchar_t* name) {
    const Panelix::UniqueHandle mapping(OpenFileMappingW(FILE_MAP_READ, FALSE, name));
    if (!mapping) {
        const DWORD error = GetLastError();
        return error == ERROR_FILE_NOT_FOUND ? L"not there" : L"does not open, " + errorText(error);
    }
    const Panelix::UniqueMappedView view(
        MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, CoreTemp::kSharedRecordBytes));
    return view ? std::wstring(L"there")
                : L"there, but shorter than " + std::to_wstring(CoreTemp::kSharedRecordBytes) + L" bytes";
}

std::wstring methodText(const CoreTempMethod& method) {
    const std::string name = coreTempExportNames(method).front();
    return wideFromAscii(name) + L" and its variants";
}

void reportCoreTempLibrary(ReportWriter& writer) {
    const Panelix::UniqueModule module = CoreTempLibrary::loadModule();
    const DWORD error = GetLastError();
    if (!reportLibrary(
            writer, CoreTemp::kLibraryFile, {programFolder(), systemFolder()}, module.get(), error)) {
        return;
    }
    const CoreTempExports exported = CoreTempLibrary::exportsOf(module.get());
    std::vector<std::wstring> missing;
    addMissingEntries(
        missing,
        kCoreTempEntries,
        [&](const CoreTempMethod& method) { return findCoreTempMethod(method, exported); },
        methodText);
    reportEntries(writer, std::tuple_size_v<decltype(kCoreTempEntries)>, missing);
}

// NVIDIA

void reportNvapiEntries(ReportWriter& writer, Nvapi::QueryInterface* queryInterface) {
    constexpr std::size_t kCount =
        std::tuple_size_v<decltype(kNvapiEndingEntries)> + std::tuple_size_v<decltype(kNvapiGpuEntries)>;
    std::vector<std::wstring> missing;
    addMissingEntries(missing, kNvapiEndingEntries, queryInterface, nvapiFunctionText);
    addMissingEntries(missing, kNvapiGpuEntries, queryInterface, nvapiFunctionText);
    reportEntries(writer, kCount, missing);
}

void reportStatus(ReportWriter& writer,
                  const GpuNvidia& gpu,
                  const wchar_t* call,
                  const std::optional<Nvapi::Status>& status) {
    if (!status) {
        writer.value(call, L"not called, for want of a card");
    } else if (*status == Nvapi::kOk) {
        writer.value(call, L"works");
    } else {
        const std::wstring number = L"fails, status " + std::to_wstring(*status) + L": ";
        const std::wstring name = nvapiStatusName(*status);
        const std::wstring text = gpu.statusText(*status);
        writer.value(call, number + name + (text != name ? L", \"" + text + L'"' : std::wstring()));
    }
}

void reportNvidiaCard(ReportWriter& writer) {
    GpuNvidia gpu;
    const bool found = gpu.initialise();
    const std::wstring name = found ? gpu.name() : std::wstring();
    const GpuStats stats = found ? gpu.sample() : GpuStats();
    const NvidiaStatuses& statuses = gpu.statuses();
    writer.value(L"Driver answers", found ? L"yes" : L"no, " + gpu.lastError());
    reportStatus(writer, gpu, L"Start of the driver", statuses.initialisation);
    if (statuses.initialisation != Nvapi::kOk) {
        return;
    }
    reportStatus(writer, gpu, L"List of the cards", statuses.enumeration);
    // Now, because no driver need tell them before it is initialised.
    if (auto* const queryInterface = Panelix::exportedFunction<Nvapi::QueryInterface>(
            GetModuleHandleW(Nvapi::kLibraryFile), Nvapi::kQueryInterfaceName)) {
        reportNvapiEntries(writer, queryInterface);
    }
    if (!found) {
        return;
    }
    reportStatus(writer, gpu, L"Call for the name", statuses.name);
    reportStatus(writer, gpu, L"Call for the load", statuses.load);
    reportStatus(writer, gpu, L"Call for the temperature", statuses.temperature);
    reportStatus(writer, gpu, L"Call for the memory", statuses.memory);
    reportStatus(writer, gpu, L"Call for the clock", statuses.clock);
    writer.value(L"Name", orNothing(name));
    reportStats(writer, stats);
}

// AMD

void reportResult(ReportWriter& writer, const wchar_t* call, const std::optional<int>& result) {
    if (!result) {
        writer.value(call, L"not called, for want of a session");
    } else {
        writer.value(call, *result == Adl::kOk ? std::wstring(L"works") : adlResultText(*result));
    }
}

void reportAmdCard(ReportWriter& writer) {
    GpuAmd gpu;
    const bool found = gpu.initialise();
    const std::wstring name = found ? gpu.name() : std::wstring();
    const GpuStats stats = found ? gpu.sample() : GpuStats();
    const AmdResults& results = gpu.results();
    writer.value(L"Driver answers", found ? L"yes" : L"no, " + gpu.lastError());
    reportResult(writer, L"Start of a session", results.create);
    reportResult(writer, L"Number of adapters", results.adapterCount);
    if (results.adapterCount == Adl::kOk) {
        writer.value(L"Adapters", std::to_wstring(gpu.adapterCount()));
    }
    if (!found) {
        return;
    }
    reportResult(writer, L"Call for the name", results.adapterInfo);
    reportResult(writer, L"Call for load and clock", results.status);
    reportResult(writer, L"Call for the temperature", results.temperature);
    writer.value(L"Name", orNothing(name));
    reportStats(writer, stats);
}

}  // namespace

void reportCoreTemp(ReportWriter& writer) {
    reportCoreTempLibrary(writer);
    writer.value(L"Shared memory, extended", mappingText(CoreTemp::kExtendedMapping));
    writer.value(L"Shared memory, original", mappingText(CoreTemp::kOriginalMapping));
    const std::unique_ptr<const CoreTempLibrary> library = CoreTempLibrary::load();
    writer.value(L"Read through", library != nullptr ? L"the library" : L"the shared memory");
    const std::optional<CoreTempReading> reading = readCoreTemp(library.get());
    writer.value(L"Core Temp answers",
                 reading ? L"yes" : L"no: it does not run, or does not share its figures");
    if (!reading) {
        return;
    }
    writer.value(L"Processor", orNothing(reading->name));
    writer.value(L"Clock", reading->clockText);
    writer.value(L"Voltage", std::to_wstring(reading->vid) + L" V");
    writer.value(L"Hottest core",
                 std::to_wstring(reading->temperature) + (reading->fahrenheit ? L" \u00B0F" : L" \u00B0C"));
}

void reportNvidia(ReportWriter& writer) {
    const Panelix::UniqueModule module = NvapiLibrary::loadModule();
    const DWORD error = GetLastError();
    if (!reportLibrary(writer, Nvapi::kLibraryFile, {systemFolder()}, module.get(), error)) {
        return;
    }
    const bool hasEntry = Panelix::exportedFunction(module.get(), Nvapi::kQueryInterfaceName) != nullptr;
    writer.value(L"nvapi_QueryInterface", hasEntry ? L"there" : L"missing");
    reportNvidiaCard(writer);
}

void reportAmd(ReportWriter& writer) {
    const HMODULE module = AdlLibrary::loadModule();
    const DWORD error = GetLastError();
    if (!reportLibrary(writer, Adl::kLibraryFile, {programFolder(), systemFolder()}, module, error)) {
        return;
    }
    std::vector<std::wstring> missing;
    addMissingEntries(
        missing,
        kAdlEntries,
        [module](const char* name) { return Panelix::exportedFunction(module, name); },
        wideFromAscii);
    reportEntries(writer, std::tuple_size_v<decltype(kAdlEntries)>, missing);
    reportAmdCard(writer);
}
