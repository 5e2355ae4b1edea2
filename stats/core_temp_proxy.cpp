#include "stats/core_temp_proxy.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "stats/ansi_text.h"

namespace {

// The extended record begins with the original one. What runs in the user's own session comes first.
constexpr const wchar_t* kMappings[] = {CoreTemp::kExtendedMapping,
                                        CoreTemp::kOriginalMapping,
                                        CoreTemp::kGlobalExtendedMapping,
                                        CoreTemp::kGlobalOriginalMapping};

bool readMapping(const wchar_t* name, CoreTemp::SharedRecord& record) {
    const Panelix::UniqueHandle mapping(OpenFileMappingW(FILE_MAP_READ, FALSE, name));
    if (!mapping) {
        return false;
    }
    // Refused for a section that is shorter.
    const Panelix::UniqueMappedView view(
        MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, CoreTemp::kSharedRecordBytes));
    if (!view) {
        return false;
    }
    std::memcpy(&record, view.get(), CoreTemp::kSharedRecordBytes);
    return true;
}

}  // namespace

// The vendor's object wants zeros. Without library its room is not touched: this runs in every pass.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): object_ is filled when it is used
CoreTempProxy::CoreTempProxy(const CoreTempLibrary* library) : library_(library) {
    if (library_ != nullptr) {
        object_.fill(std::byte{0});
        library_->entries().construct(object_.data());
    }
}

CoreTempProxy::~CoreTempProxy() {
    if (library_ != nullptr) {
        library_->entries().destruct(object_.data());
    }
}

bool CoreTempProxy::GetData() {
    return library_ != nullptr ? library_->entries().GetData(object_.data()) : readSharedMemory();
}

// No lock: a reading that Core Temp is just changing mixes figures of two moments, which shows for one pass
// at most.
bool CoreTempProxy::readSharedMemory() {
    return std::any_of(std::begin(kMappings), std::end(kMappings), [this](const wchar_t* name) {
        return readMapping(name, record_);
    });
}

bool CoreTempProxy::IsFahrenheit() {
    return library_ != nullptr ? library_->entries().IsFahrenheit(object_.data()) : record_.ucFahrenheit != 0;
}

std::string_view CoreTempProxy::GetCPUName() const {
    if (library_ == nullptr) {
        return textOfField(record_.sCPUName);
    }
    const char* name = library_->entries().GetCPUName(object_.data());
    // The library hands out its record's field, so the bound is the field's.
    return name == nullptr ? std::string_view()
                           : std::string_view(name, strnlen(name, CoreTemp::kNameLength));
}

float CoreTempProxy::GetCPUSpeed() const {
    return library_ != nullptr ? library_->entries().GetCPUSpeed(object_.data()) : record_.fCPUSpeed;
}

float CoreTempProxy::GetFSBSpeed() const {
    return library_ != nullptr ? library_->entries().GetFSBSpeed(object_.data()) : record_.fFSBSpeed;
}

float CoreTempProxy::GetMultiplier() const {
    return library_ != nullptr ? library_->entries().GetMultiplier(object_.data()) : record_.fMultiplier;
}

float CoreTempProxy::GetVID() const {
    return library_ != nullptr ? library_->entries().GetVID(object_.data()) : record_.fVID;
}

unsigned CoreTempProxy::GetCPUCount() const {
    return library_ != nullptr ? library_->entries().GetCPUCount(object_.data()) : record_.uiCPUCnt;
}

unsigned CoreTempProxy::GetCoreCount() const {
    return library_ != nullptr ? library_->entries().GetCoreCount(object_.data()) : record_.uiCoreCnt;
}

float CoreTempProxy::GetTemp(int index) const {
    if (index < 0 || static_cast<std::uint32_t>(index) >= CoreTemp::kMaxCores) {
        return 0.0F;
    }
    return library_ != nullptr ? library_->entries().GetTemp(object_.data(), index) : record_.fTemp[index];
}
