#include <windows.h>

#include <endpointvolume.h>
#include <mmdeviceapi.h>
#include <wrl/client.h>

#include <algorithm>
#include <cstddef>
#include <string>

#include "app/report/sections.h"
#include "app/report/system_facts.h"
#include "stats/device_name.h"
#include "stats/policy_config_abi.h"
#include "stats/volume_percent.h"

namespace {

using Microsoft::WRL::ComPtr;

/// A count that cannot be must not fill the report.
constexpr UINT kMostDevices = 100;

/// Long enough for a whole name: of one that is cut, half a private name could be left.
constexpr std::size_t kLongestName = 32'768;

struct Flow {
    EDataFlow flow;
    const wchar_t* singular;
    const wchar_t* plural;
};

constexpr Flow kSpeakers{eRender, L"Speaker", L"Speakers"};
constexpr Flow kMicrophones{eCapture, L"Microphone", L"Microphones"};

std::wstring percentText(HRESULT result, float scalar) {
    return SUCCEEDED(result) ? std::to_wstring(truncatedPercent(scalar)) + L" %"
                             : L"fails, " + resultText(result);
}

/// The server of Core Audio's class, as it is registered.
void reportServer(ReportWriter& writer) {
    wchar_t path[MAX_PATH] = L"";
    DWORD bytes = sizeof(path);
    // With what stands there in percent signs expanded.
    const LSTATUS status = RegGetValueW(HKEY_CLASSES_ROOT,
                                        L"CLSID\\{BCDE0395-E52F-467C-8E3D-C4579291692E}\\InprocServer32",
                                        nullptr,
                                        RRF_RT_REG_SZ,
                                        nullptr,
                                        path,
                                        &bytes);
    if (status == ERROR_FILE_NOT_FOUND) {
        writer.value(L"Core Audio's library", L"not registered");
        return;
    }
    if (status != ERROR_SUCCESS) {
        writer.notLookedAt(L"Core Audio's library", errorText(static_cast<DWORD>(status)));
        return;
    }
    writer.value(L"Core Audio's library", path);
    writer.value(L"Version of the library", versionText(path));
}

ComPtr<IMMDeviceEnumerator> createEnumerator(ReportWriter& writer) {
    ComPtr<IMMDeviceEnumerator> enumerator;
    const HRESULT result =
        CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL, IID_PPV_ARGS(&enumerator));
    if (FAILED(result)) {
        writer.notLookedAt(L"Devices", resultText(result));
    }
    return enumerator;
}

void reportPolicyClass(ReportWriter& writer) {
    ComPtr<IPolicyConfig> policy;
    const HRESULT result =
        CoCreateInstance(PolicyConfigAbi::kClass, nullptr, CLSCTX_ALL, IID_PPV_ARGS(&policy));
    writer.value(L"Default device can be set", SUCCEEDED(result) ? L"yes" : L"no, " + resultText(result));
}

/// Null when there is none.
ComPtr<IMMDevice> reportDefault(ReportWriter& writer, IMMDeviceEnumerator& enumerator, const Flow& kind) {
    ComPtr<IMMDevice> device;
    const HRESULT result = enumerator.GetDefaultAudioEndpoint(kind.flow, eConsole, &device);
    const std::wstring label =
        std::wstring(L"Default ") + (kind.flow == eRender ? L"speaker" : L"microphone");
    if (device != nullptr) {
        writer.value(label, friendlyName(*device.Get(), kLongestName));
    } else if (result == E_NOTFOUND) {
        writer.value(label, L"none");
    } else {
        writer.value(label, L"the system does not say, " + resultText(result));
    }
    return device;
}

void reportDevices(ReportWriter& writer, IMMDeviceEnumerator& enumerator, const Flow& kind) {
    ComPtr<IMMDeviceCollection> devices;
    const HRESULT result = enumerator.EnumAudioEndpoints(kind.flow, DEVICE_STATE_ACTIVE, &devices);
    if (devices == nullptr) {
        writer.value(kind.plural, L"cannot be listed, " + resultText(result));
        return;
    }
    UINT count = 0;
    devices->GetCount(&count);
    writer.value(kind.plural, std::to_wstring(count) + L" active");
    for (UINT i = 0; i < std::min(count, kMostDevices); ++i) {
        ComPtr<IMMDevice> device;
        const HRESULT taken = devices->Item(i, &device);
        writer.value(
            kind.singular + (L' ' + std::to_wstring(i + 1)),
            device != nullptr ? friendlyName(*device.Get(), kLongestName) : L"gone, " + resultText(taken));
    }
}

void reportVolume(ReportWriter& writer, IMMDevice* device, bool speaker) {
    if (device == nullptr) {
        return;
    }
    ComPtr<IAudioEndpointVolume> volume;
    const HRESULT result =
        device->Activate(__uuidof(IAudioEndpointVolume), CLSCTX_ALL, nullptr, IID_PPV_ARGS_Helper(&volume));
    if (volume == nullptr) {
        writer.value(L"Volume", L"not to be had, " + resultText(result));
        return;
    }
    if (speaker) {
        float scalar = 0.0F;
        HRESULT asked = volume->GetChannelVolumeLevelScalar(0, &scalar);
        writer.value(L"Volume left", percentText(asked, scalar));
        asked = volume->GetChannelVolumeLevelScalar(1, &scalar);
        writer.value(L"Volume right", percentText(asked, scalar));
        asked = volume->GetMasterVolumeLevelScalar(&scalar);
        writer.value(L"Volume master", percentText(asked, scalar));
    }
    BOOL muted = FALSE;
    const HRESULT asked = volume->GetMute(&muted);
    writer.value(speaker ? L"Speaker muted" : L"Microphone muted",
                 SUCCEEDED(asked) ? std::wstring(yesNo(muted != FALSE)) : L"fails, " + resultText(asked));
}

}  // namespace

void reportSound(ReportWriter& writer) {
    reportServer(writer);
    const ComPtr<IMMDeviceEnumerator> enumerator = createEnumerator(writer);
    if (enumerator == nullptr) {
        return;
    }
    reportDevices(writer, *enumerator.Get(), kSpeakers);
    reportVolume(writer, reportDefault(writer, *enumerator.Get(), kSpeakers).Get(), true);
    reportDevices(writer, *enumerator.Get(), kMicrophones);
    reportVolume(writer, reportDefault(writer, *enumerator.Get(), kMicrophones).Get(), false);
    reportPolicyClass(writer);
}
