// The stand-in for the Core Audio classes that the program creates: what COM asks an in-process server for.

#include <windows.h>

#include <mmdeviceapi.h>
#include <olectl.h>
#include <unknwn.h>

#include "standins/core_audio/audio_objects.h"
#include "standins/core_audio/class_registration.h"
#include "standins/core_audio/server_record.h"
#include "stats/policy_config_abi.h"

namespace {

using Creator = HRESULT(REFIID iid, void** out) noexcept;

// COM's interfaces have no virtual destructor: it would take slots of the method table.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// One per class, for as long as the library is loaded: its references do not count.
class ClassFactory final : public IClassFactory {
public:
    explicit ClassFactory(Creator* create) noexcept : create_(create) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) noexcept override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = nullptr;
        if (iid != __uuidof(IUnknown) && iid != __uuidof(IClassFactory)) {
            return E_NOINTERFACE;
        }
        *out = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 2; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) noexcept override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = nullptr;
        if (outer != nullptr) {
            return CLASS_E_NOAGGREGATION;
        }
        if (Standins::openServerRecord() == nullptr) {
            return E_OUTOFMEMORY;
        }
        return create_(iid, out);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL /*lock*/) noexcept override { return S_OK; }

private:
    Creator* create_;
};

#pragma GCC diagnostic pop

ClassFactory enumeratorFactory(&Standins::createEnumerator);
ClassFactory policyConfigFactory(&Standins::createPolicyConfig);

HMODULE thisModule() noexcept {
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&thisModule),
                       &self);
    return self;
}

}  // namespace

extern "C" {

HRESULT WINAPI DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* out) {
    if (clsid == __uuidof(MMDeviceEnumerator)) {
        return enumeratorFactory.QueryInterface(iid, out);
    }
    if (clsid == PolicyConfigAbi::kClass) {
        return policyConfigFactory.QueryInterface(iid, out);
    }
    if (out != nullptr) {
        *out = nullptr;
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

// The notification threads run to the end of the process.
HRESULT WINAPI DllCanUnloadNow() {
    return S_FALSE;
}

// For regsvr32, and regsvr32 /u.
HRESULT WINAPI DllRegisterServer() {
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(thisModule(), path, MAX_PATH);
    const bool whole = length > 0 && length < MAX_PATH;
    return whole && Standins::registerClasses(path) ? S_OK : SELFREG_E_CLASS;
}

HRESULT WINAPI DllUnregisterServer() {
    return Standins::unregisterClasses() ? S_OK : SELFREG_E_CLASS;
}

}  // extern "C"
