#pragma once

#include <windows.h>

#include <mmdeviceapi.h>

/// Binary interface of the system's policy-configuration object, which chooses the default audio device. It
/// is published in no SDK header; the ids and the method's place are those that the audio control panel
/// relies on since Windows Vista. A newer sibling, interface {F8679F50-850A-41CF-9C72-430F290290C8}, has one
/// method more before SetDefaultEndpoint: the two must not be mixed.
namespace PolicyConfigAbi {

inline constexpr CLSID kClass = {
    0x294935CE, 0xF637, 0x4E7C, {0xA4, 0x1B, 0xAB, 0x25, 0x54, 0x60, 0xB8, 0x62}};

}  // namespace PolicyConfigAbi

// COM's interfaces have no virtual destructor: it would take slots of the method table.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Only SetDefaultEndpoint is called. The methods before it keep its place in the table; their parameters are
/// left out, so they must never be called.
struct IPolicyConfig : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetMixFormat() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDeviceFormat() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDeviceFormat() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProcessingPeriod() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetProcessingPeriod() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetShareMode() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetShareMode() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPropertyValue() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPropertyValue() = 0;
    /// Makes the endpoint with this id string the default one for the role.
    virtual HRESULT STDMETHODCALLTYPE SetDefaultEndpoint(const wchar_t* deviceId, ERole role) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetEndpointVisibility() = 0;
};

#pragma GCC diagnostic pop

__CRT_UUID_DECL(IPolicyConfig, 0x568B9108, 0x44BF, 0x40B4, 0x90, 0x06, 0x86, 0xAF, 0xE5, 0xB5, 0xA6, 0x20)
