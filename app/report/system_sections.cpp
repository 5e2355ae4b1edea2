#include <windows.h>

#include <xinput.h>

#include <cstdint>
#include <cwchar>
#include <array>
#include <limits>
#include <string>
#include <vector>

#include "app/report/gamepad_battery_text.h"
#include "app/report/sections.h"
#include "app/report/system_facts.h"
#include "framework/core/exported_function.h"
#include "framework/core/unique_resource.h"
#include "stats/gamepad_battery.h"
#include "stats/physical_memory.h"
#include "stats/unread_mail.h"

namespace {

using Panelix::UniqueHkey;

constexpr wchar_t kXinputFile[] = L"xinput1_4.dll";
constexpr DWORD kGamepads = 4;

std::wstring callText(DWORD error) {
    return error == ERROR_SUCCESS ? L"works" : L"fails, " + errorText(error);
}

std::wstring mebibytes(DWORDLONG bytes) {
    return std::to_wstring(bytes >> 20) + L" MiB";
}

std::wstring batteryTypeText(BYTE type) {
    switch (type) {
        case BATTERY_TYPE_DISCONNECTED:
            return L"disconnected";
        case BATTERY_TYPE_WIRED:
            return L"wired";
        case BATTERY_TYPE_ALKALINE:
            return L"alkaline";
        case BATTERY_TYPE_NIMH:
            return L"NiMH";
        default:
            return L"unknown, " + std::to_wstring(type);
    }
}

std::wstring batteryLevelText(BYTE level) {
    constexpr const wchar_t* kLevels[] = {L"empty", L"low", L"medium", L"full"};
    return level <= BATTERY_LEVEL_FULL ? kLevels[level] : L"unknown, " + std::to_wstring(level);
}

void reportBattery(ReportWriter& writer, DWORD gamepad) {
    XINPUT_BATTERY_INFORMATION battery{};
    const DWORD error = XInputGetBatteryInformation(gamepad, BATTERY_DEVTYPE_GAMEPAD, &battery);
    if (error != ERROR_SUCCESS) {
        writer.more(L"XInputGetBatteryInformation " + callText(error));
        return;
    }
    writer.more(L"battery: " + batteryTypeText(battery.BatteryType) + L", level: " +
                batteryLevelText(battery.BatteryLevel));
}

/// What an account says of its unread mails.
std::wstring accountText(HKEY accounts, const wchar_t* name) {
    DWORD count = 0;
    DWORD bytes = sizeof(count);
    // Any type of four bytes: that is how the program takes it.
    UniqueHkey account;
    LSTATUS status = RegOpenKeyExW(accounts, name, 0, KEY_READ, account.put());
    if (status == ERROR_SUCCESS) {
        status = RegQueryValueExW(
            account.get(), kUnreadMailCount, nullptr, nullptr, reinterpret_cast<BYTE*>(&count), &bytes);
    }
    return status == ERROR_SUCCESS ? std::to_wstring(count)
                                   : L"no count, " + errorText(static_cast<DWORD>(status));
}

/// Adds the text of each account. ERROR_NO_MORE_ITEMS after the last one.
LSTATUS addAccountTexts(std::vector<std::wstring>& texts, HKEY accounts) {
    // Longer than any name of a key.
    std::array<wchar_t, 1024> name{};
    for (DWORD index = 0;; ++index) {
        auto length = static_cast<DWORD>(name.size());
        const LSTATUS status =
            RegEnumKeyExW(accounts, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (status != ERROR_SUCCESS) {
            return status;
        }
        texts.push_back(accountText(accounts, name.data()));
    }
}

}  // namespace

void reportCpuLoad(ReportWriter& writer) {
    writer.value(L"Processors", std::to_wstring(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS)));
    FILETIME idle{};
    FILETIME kernel{};
    FILETIME user{};
    const DWORD error = GetSystemTimes(&idle, &kernel, &user) != FALSE ? ERROR_SUCCESS : GetLastError();
    writer.value(L"GetSystemTimes", callText(error));
}

void reportMemory(ReportWriter& writer) {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof(status);
    const DWORD error = GlobalMemoryStatusEx(&status) != FALSE ? ERROR_SUCCESS : GetLastError();
    writer.value(L"GlobalMemoryStatusEx", callText(error));
    if (error == ERROR_SUCCESS) {
        writer.value(L"Physical memory",
                     mebibytes(status.ullTotalPhys) + L", free " + mebibytes(status.ullAvailPhys));
    }
    writer.value(L"In use", std::to_wstring(readPhysicalMemoryPercent()) + L" %");
}

void reportMail(ReportWriter& writer) {
    UniqueHkey accounts;
    const LSTATUS status = RegOpenKeyExW(HKEY_CURRENT_USER, kUnreadMailKey, 0, KEY_READ, accounts.put());
    if (status == ERROR_FILE_NOT_FOUND) {
        writer.value(L"Accounts", L"no mail program has left a list");
    } else if (status != ERROR_SUCCESS) {
        writer.notLookedAt(L"Accounts", errorText(static_cast<DWORD>(status)));
    } else {
        std::vector<std::wstring> texts;
        const LSTATUS end = addAccountTexts(texts, accounts.get());
        writer.value(L"Accounts", std::to_wstring(texts.size()));
        for (std::size_t i = 0; i < texts.size(); ++i) {
            writer.value(L"Unread in account " + std::to_wstring(i + 1), texts[i]);
        }
        if (end != ERROR_NO_MORE_ITEMS) {
            writer.notLookedAt(L"Further accounts", errorText(static_cast<DWORD>(end)));
        }
    }
    const std::int32_t unread = readUnreadMail();
    writer.value(L"Unread, as Kelvaro counts", unread < 0 ? L"not available" : std::to_wstring(unread));
}

void reportGamepad(ReportWriter& writer) {
    // Imported: without it neither program would start.
    const HMODULE module = GetModuleHandleW(kXinputFile);
    const std::wstring path = modulePath(module);
    writer.value(L"Library", module != nullptr ? path : L"not loaded");
    writer.value(L"Version of the library", versionText(path));
    for (DWORD gamepad = 0; gamepad < kGamepads; ++gamepad) {
        XINPUT_STATE state{};
        const DWORD error = XInputGetState(gamepad, &state);
        const std::wstring label = L"Gamepad " + std::to_wstring(gamepad + 1);
        if (error == ERROR_DEVICE_NOT_CONNECTED) {
            writer.value(label, L"not connected");
        } else if (error != ERROR_SUCCESS) {
            writer.value(label, L"XInputGetState " + callText(error));
        } else {
            writer.value(label,
                         gamepad == 0 ? L"connected" : L"connected, but Kelvaro shows the first one only");
            reportBattery(writer, gamepad);
        }
    }
    writer.value(L"Battery, as Kelvaro shows", gamepadBatteryText(readGamepadBattery()));
}
