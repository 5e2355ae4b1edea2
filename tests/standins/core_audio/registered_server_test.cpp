// The stand-in as any program finds it: through the registry.

#include <gtest/gtest.h>

#include <windows.h>

#include <mmdeviceapi.h>
#include <wrl/client.h>

#include <string>

#include "framework/core/com_apartment.h"
#include "framework/core/unique_resource.h"
#include "standins/core_audio/class_registration.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/core_audio/virtual_audio.h"
#include "standins/vendor_libraries.h"
#include "stats/policy_config_abi.h"

namespace {

using Microsoft::WRL::ComPtr;
using Standins::AudioCall;

DWORD run(std::wstring commandLine) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(
            nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        ADD_FAILURE() << "regsvr32 cannot be started";
        return MAXDWORD;
    }
    const Panelix::UniqueHandle processHandle(process.hProcess);
    const Panelix::UniqueHandle threadHandle(process.hThread);
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = MAXDWORD;
    GetExitCodeProcess(process.hProcess, &code);
    return code;
}

DWORD regsvr32(const std::wstring& options) {
    return run(L"regsvr32.exe /s " + options + L"\"" +
               Standins::vendorLibraryPath(Standins::VendorLibrary::CoreAudio) + L"\"");
}

std::wstring enumeratorServer() {
    wchar_t path[MAX_PATH] = {};
    DWORD bytes = sizeof(path);
    RegGetValueW(HKEY_LOCAL_MACHINE,
                 L"SOFTWARE\\Classes\\CLSID\\{BCDE0395-E52F-467C-8E3D-C4579291692E}\\InprocServer32",
                 nullptr,
                 RRF_RT_REG_SZ,
                 nullptr,
                 path,
                 &bytes);
    return path;
}

HRESULT createEnumerator() {
    ComPtr<IMMDeviceEnumerator> enumerator;
    return CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL, IID_PPV_ARGS(&enumerator));
}

HRESULT createPolicyConfig() {
    ComPtr<IPolicyConfig> policy;
    return CoCreateInstance(PolicyConfigAbi::kClass, nullptr, CLSCTX_ALL, IID_PPV_ARGS(&policy));
}

class RegisteredAudioServer : public testing::Test {
protected:
    // A run that was ended may have left its registration.
    RegisteredAudioServer() {
        Standins::unregisterClasses();
        Standins::useOwnSession();
    }
    ~RegisteredAudioServer() override { Standins::unregisterClasses(); }

    Panelix::ComApartment com;
};

TEST_F(RegisteredAudioServer, IsFoundThroughTheRegistryAndLeavesItAsItWas) {
    const std::wstring systems = enumeratorServer();
    const HRESULT systemsPolicyConfig = createPolicyConfig();
    ASSERT_FALSE(systems.empty());
    ASSERT_EQ(regsvr32(L""), 0U);
    EXPECT_EQ(enumeratorServer(), Standins::vendorLibraryPath(Standins::VendorLibrary::CoreAudio));

    const Standins::VirtualAudio audio;
    EXPECT_EQ(createEnumerator(), S_OK);
    EXPECT_EQ(createPolicyConfig(), S_OK);
    EXPECT_EQ(audio.callCount(AudioCall::CreateEnumerator), 1U);
    EXPECT_EQ(audio.callCount(AudioCall::CreatePolicyConfig), 1U);

    ASSERT_EQ(regsvr32(L"/u "), 0U);
    EXPECT_EQ(enumeratorServer(), systems);
    EXPECT_EQ(createEnumerator(), S_OK);
    EXPECT_EQ(audio.callCount(AudioCall::CreateEnumerator), 1U) << "the stand-in was asked again";
    EXPECT_EQ(createPolicyConfig(), systemsPolicyConfig);
}

}  // namespace
