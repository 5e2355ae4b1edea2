#include "stats/nvapi_status.h"

#include <algorithm>
#include <iterator>

namespace {

struct NamedStatus {
    Nvapi::Status status;
    const wchar_t* name;
};

constexpr NamedStatus kNames[] = {
    {0, L"NVAPI_OK"},
    {-1, L"NVAPI_ERROR"},
    {-2, L"NVAPI_LIBRARY_NOT_FOUND"},
    {-3, L"NVAPI_NO_IMPLEMENTATION"},
    {-4, L"NVAPI_API_NOT_INITIALIZED"},
    {-5, L"NVAPI_INVALID_ARGUMENT"},
    {-6, L"NVAPI_NVIDIA_DEVICE_NOT_FOUND"},
    {-7, L"NVAPI_END_ENUMERATION"},
    {-8, L"NVAPI_INVALID_HANDLE"},
    {-9, L"NVAPI_INCOMPATIBLE_STRUCT_VERSION"},
    {-10, L"NVAPI_HANDLE_INVALIDATED"},
    {-14, L"NVAPI_INVALID_POINTER"},
    {-101, L"NVAPI_EXPECTED_PHYSICAL_GPU_HANDLE"},
    {-104, L"NVAPI_NOT_SUPPORTED"},
    {-108, L"NVAPI_DEVICE_BUSY"},
    {-130, L"NVAPI_OUT_OF_MEMORY"},
    {-220, L"NVAPI_GPU_NOT_POWERED"},
};

}  // namespace

std::wstring nvapiStatusName(Nvapi::Status status) {
    const auto* const found =
        std::find_if(std::begin(kNames), std::end(kNames), [status](const NamedStatus& entry) {
            return entry.status == status;
        });
    return found != std::end(kNames) ? found->name : L"NVAPI status " + std::to_wstring(status);
}
