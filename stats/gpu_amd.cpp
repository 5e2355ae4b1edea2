#include "stats/gpu_amd.h"

#include <cstdlib>

#include "stats/ansi_text.h"

namespace {

// Whichever adapter the driver lists first.
constexpr int kAdapter = 0;
constexpr std::uint32_t kKHzPerClockUnit = 10;
constexpr int kMillidegreesPerDegree = 1000;

// noexcept: the driver calls it.
void* allocate(int bytes) noexcept {
    return bytes > 0 ? std::malloc(static_cast<std::size_t>(bytes)) : nullptr;
}

struct AllocationFreer {
    void operator()(Adl::AdapterInfo* infos) const { std::free(infos); }
};

}  // namespace

GpuAmd::~GpuAmd() {
    if (context_ != nullptr) {
        // Nobody is left to ask for the error.
        library_->entries().ADL2_Main_Control_Destroy(context_);
    }
}

bool GpuAmd::initialise() {
    bool found = false;
    library_ = AdlLibrary::load(found);
    if (library_ == nullptr) {
        setLastError(found ? L"AMD specific APIs are missing" : L"Could not load AMD DLL");
        return false;
    }
    const AdlEntries& adl = library_->entries();
    results_.create = adl.ADL2_Main_Control_Create(allocate, Adl::kConnectedAdaptersOnly, &context_);
    if (results_.create != Adl::kOk) {
        // Whatever was written there is no session.
        context_ = nullptr;
        setLastError(L"Failed to initialize ADL2 context");
        return false;
    }
    results_.adapterCount = adl.ADL2_Adapter_NumberOfAdapters_Get(context_, &adapterCount_);
    if (results_.adapterCount != Adl::kOk) {
        setLastError(L"ADL2: Cannot get the number of adapters");
        return false;
    }
    if (adapterCount_ <= 0) {
        adl.ADL2_Main_Control_Destroy(context_);
        // Gone: the destructor must not end it again.
        context_ = nullptr;
        setLastError(L"ADL2: No AMD card found");
        return false;
    }
    return true;
}

GpuStats GpuAmd::sample() {
    GpuStats stats;
    if (context_ == nullptr) {
        return stats;
    }
    const AdlEntries& adl = library_->entries();
    Adl::ADLOD6CurrentStatus status{};
    results_.status = adl.ADL2_Overdrive6_CurrentStatus_Get(context_, kAdapter, &status);
    if (results_.status == Adl::kOk) {
        stats.load = status.iActivityPercent;
        stats.coreClock = static_cast<std::uint32_t>(status.iEngineClock) * kKHzPerClockUnit;
        stats.loadValid = true;
        stats.coreClockValid = true;
    }
    int millidegrees = 0;
    results_.temperature = adl.ADL2_Overdrive6_Temperature_Get(context_, kAdapter, &millidegrees);
    if (results_.temperature == Adl::kOk) {
        stats.temperature = millidegrees / kMillidegreesPerDegree;
        stats.temperatureValid = true;
    }
    stats.memoryLoadValid = true;
    return stats;
}

std::wstring GpuAmd::name() {
    Adl::AdapterInfo* allocated = nullptr;
    if (context_ != nullptr) {
        results_.adapterInfo = library_->entries().ADL2_Adapter_AdapterInfoX2_Get(context_, &allocated);
    }
    if (results_.adapterInfo != Adl::kOk || allocated == nullptr) {
        return L"AMD card name failed";
    }
    const std::unique_ptr<Adl::AdapterInfo, AllocationFreer> infos(allocated);
    return wideFromAnsi(textOfField(infos->strAdapterName));
}
