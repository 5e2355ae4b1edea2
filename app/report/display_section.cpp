#include <windows.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "app/report/sections.h"
#include "app/report/system_facts.h"
#include "framework/core/unique_resource.h"

namespace {

/// Where Windows keeps the drivers of display adapters, those of removed ones included, in subkeys "0000"
/// and so on.
constexpr wchar_t kDriversKey[] =
    L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e968-e325-11ce-bfc1-08002be10318}";

/// Lists that cannot be must not fill the report.
constexpr DWORD kMostSubkeys = 64;
constexpr DWORD kMostDisplays = 64;

struct Driver {
    std::wstring adapter;
    std::wstring version;
    std::wstring date;
};

/// Empty when there is none.
std::wstring driverText(HKEY drivers, const wchar_t* subkey, const wchar_t* value) {
    std::array<wchar_t, 256> text{};
    DWORD bytes = sizeof(text);
    return RegGetValueW(drivers, subkey, value, RRF_RT_REG_SZ, nullptr, text.data(), &bytes) == ERROR_SUCCESS
               ? std::wstring(text.data())
               : std::wstring();
}

std::vector<Driver> installedDrivers(HKEY drivers) {
    std::vector<Driver> found;
    for (DWORD index = 0; index < kMostSubkeys; ++index) {
        // Longer than any name of a key.
        std::array<wchar_t, 256> subkey{};
        auto length = static_cast<DWORD>(subkey.size());
        const LSTATUS status =
            RegEnumKeyExW(drivers, index, subkey.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (status != ERROR_SUCCESS) {
            break;
        }
        // Not each subkey is an adapter's: "Properties", which only the system may open, is none.
        Driver driver{driverText(drivers, subkey.data(), L"DriverDesc"),
                      driverText(drivers, subkey.data(), L"DriverVersion"),
                      driverText(drivers, subkey.data(), L"DriverDate")};
        if (!driver.adapter.empty()) {
            found.push_back(std::move(driver));
        }
    }
    return found;
}

/// Names of the adapters that are in the machine now, one for each of their outputs.
std::vector<std::wstring> presentAdapters() {
    std::vector<std::wstring> found;
    DISPLAY_DEVICEW display{};
    display.cb = sizeof(display);
    for (DWORD index = 0; index < kMostDisplays && EnumDisplayDevicesW(nullptr, index, &display, 0) != FALSE;
         ++index) {
        found.emplace_back(display.DeviceString);
    }
    return found;
}

std::wstring versionOf(const Driver& driver) {
    const std::wstring version = driver.version.empty() ? L"without a version" : driver.version;
    return driver.date.empty() ? version : version + L" of " + driver.date;
}

}  // namespace

void reportDisplayAdapters(ReportWriter& writer) {
    Panelix::UniqueHkey key;
    const LSTATUS status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kDriversKey, 0, KEY_READ, key.put());
    if (status == ERROR_FILE_NOT_FOUND) {
        writer.value(L"Adapters", L"no driver is installed");
        return;
    }
    if (status != ERROR_SUCCESS) {
        writer.notLookedAt(L"Adapters", errorText(static_cast<DWORD>(status)));
        return;
    }
    const std::vector<Driver> drivers = installedDrivers(key.get());
    const std::vector<std::wstring> present = presentAdapters();
    writer.value(L"Adapters", std::to_wstring(drivers.size()));
    for (std::size_t i = 0; i < drivers.size(); ++i) {
        const bool isPresent = std::find(present.begin(), present.end(), drivers[i].adapter) != present.end();
        writer.value(L"Adapter " + std::to_wstring(i + 1),
                     drivers[i].adapter + (isPresent ? L"" : L", not in the machine now"));
        writer.value(L"Driver", versionOf(drivers[i]));
    }
}
