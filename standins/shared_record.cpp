#include "standins/shared_record.h"

#include <windows.h>

#include <atomic>
#include <stdexcept>

namespace Standins {

namespace {

constexpr wchar_t kSessionVariable[] = L"KELVARO_STANDIN_SESSION";
constexpr DWORD kSessionNameLimit = 64;

std::string describe(const std::string& what, DWORD error) {
    return what + " (error " + std::to_string(error) + ")";
}

}  // namespace

std::wstring sectionName(const std::wstring& standin) {
    std::wstring name = L"Local\\Kelvaro" + standin;
    wchar_t session[kSessionNameLimit];
    const DWORD length = GetEnvironmentVariableW(kSessionVariable, session, kSessionNameLimit);
    if (length > 0 && length < kSessionNameLimit) {
        name += L'.';
        name.append(session, length);
    }
    return name;
}

void useOwnSession() {
    SetEnvironmentVariableW(kSessionVariable, std::to_wstring(GetCurrentProcessId()).c_str());
}

std::uint64_t nowMicroseconds() noexcept {
    constexpr std::uint64_t kPerSecond = 1'000'000;
    LARGE_INTEGER frequency;
    LARGE_INTEGER count;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&count);
    const auto ticks = static_cast<std::uint64_t>(count.QuadPart);
    const auto perSecond = static_cast<std::uint64_t>(frequency.QuadPart);
    // In two steps: ticks times a million would overflow after some days.
    return ticks / perSecond * kPerSecond + ticks % perSecond * kPerSecond / perSecond;
}

SharedRecord::SharedRecord(const std::wstring& name, std::uint64_t identity, std::size_t size) {
    const auto size64 = static_cast<std::uint64_t>(size);
    section_.reset(CreateFileMappingW(INVALID_HANDLE_VALUE,
                                      nullptr,
                                      PAGE_READWRITE,
                                      static_cast<DWORD>(size64 >> 32),
                                      static_cast<DWORD>(size64),
                                      name.c_str()));
    if (!section_) {
        throw std::runtime_error(describe("The stand-in's shared record cannot be opened", GetLastError()));
    }
    view_.reset(MapViewOfFile(section_.get(), FILE_MAP_ALL_ACCESS, 0, 0, size));
    if (!view_) {
        throw std::runtime_error(describe("The stand-in's shared record cannot be mapped", GetLastError()));
    }
    // Whoever comes first writes the identity; everybody checks it.
    std::atomic_ref<std::uint64_t> stored(*static_cast<std::uint64_t*>(view_.get()));
    std::uint64_t found = 0;
    if (!stored.compare_exchange_strong(found, identity) && found != identity) {
        throw std::runtime_error("The stand-in's shared record belongs to another version");
    }
}

}  // namespace Standins
