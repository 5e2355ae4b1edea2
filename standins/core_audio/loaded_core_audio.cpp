#include "standins/core_audio/loaded_core_audio.h"

#include <mmdeviceapi.h>
#include <objbase.h>
#include <wrl/client.h>

#include <stdexcept>

#include "framework/core/exported_function.h"
#include "standins/vendor_libraries.h"
#include "stats/policy_config_abi.h"

namespace Standins {

namespace {

using GetClassObject = HRESULT WINAPI(REFCLSID clsid, REFIID iid, LPVOID* out);

GetClassObject* loadClassObjects() {
    const HMODULE library = LoadLibraryW(vendorLibraryPath(VendorLibrary::CoreAudio).c_str());
    if (library == nullptr) {
        throw std::runtime_error("The audio stand-in cannot be loaded");
    }
    return Panelix::exportedFunction<GetClassObject>(library, "DllGetClassObject");
}

DWORD registerClass(GetClassObject* getClassObject, REFCLSID clsid) {
    Microsoft::WRL::ComPtr<IUnknown> factory;
    DWORD cookie = 0;
    if (FAILED(getClassObject(clsid, IID_PPV_ARGS(&factory))) ||
        FAILED(
            CoRegisterClassObject(clsid, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie))) {
        throw std::runtime_error("COM does not take the audio stand-in's class");
    }
    return cookie;
}

}  // namespace

LoadedCoreAudio::LoadedCoreAudio(bool withPolicyConfig) {
    // The library stays: its threads run to the end of the process.
    GetClassObject* const getClassObject = loadClassObjects();
    enumeratorCookie_ = registerClass(getClassObject, __uuidof(MMDeviceEnumerator));
    if (withPolicyConfig) {
        policyConfigCookie_ = registerClass(getClassObject, PolicyConfigAbi::kClass);
    }
}

LoadedCoreAudio::~LoadedCoreAudio() {
    CoRevokeClassObject(enumeratorCookie_);
    if (policyConfigCookie_ != 0) {
        CoRevokeClassObject(policyConfigCookie_);
    }
}

}  // namespace Standins
