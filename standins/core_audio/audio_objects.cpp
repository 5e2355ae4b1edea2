#include "standins/core_audio/audio_objects.h"

#include <windows.h>

#include <endpointvolume.h>
#include <mmdeviceapi.h>
#include <propidl.h>

#include <atomic>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "standins/core_audio/server_record.h"
#include "standins/core_audio/notifier.h"
#include "stats/policy_config_abi.h"

namespace Standins {

namespace {

// As the real system answers: no such device, a device that has gone, and no service, to a volume and to
// others.
constexpr HRESULT kNotFound = static_cast<HRESULT>(0x80070490);
constexpr HRESULT kDeviceInvalidated = static_cast<HRESULT>(0x88890004);
constexpr HRESULT kServiceNotRunning = static_cast<HRESULT>(0x88890010);
constexpr HRESULT kServerUnavailable = static_cast<HRESULT>(0x800706BA);
constexpr UINT kNumberInsteadOfName = 42;
// Device's friendly name; the SDK declares the key, but no library of MinGW's defines it.
constexpr PROPERTYKEY kFriendlyNameKey{
    {0xA45C254E, 0xDF1C, 0x4EFD, {0x80, 0x20, 0x67, 0xD1, 0x46, 0xA8, 0x50, 0xE0}}, 14};

std::int32_t asDevice(std::uint32_t index) noexcept {
    return static_cast<std::int32_t>(index);
}

HRESULT unexpectedCall() noexcept {
    serverRecord().enter({.call = AudioCall::Other});
    return E_NOTIMPL;
}

bool hasFlow(EDataFlow wanted, AudioFlow flow) noexcept {
    return wanted == eAll || wanted == (flow == AudioFlow::Render ? eRender : eCapture);
}

// Null when there is no memory.
wchar_t* copyToTaskMemory(const std::wstring& text) noexcept {
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    auto* const copy = static_cast<wchar_t*>(CoTaskMemAlloc(bytes));
    if (copy != nullptr) {
        std::memcpy(copy, text.c_str(), bytes);
    }
    return copy;
}

std::wstring endless(const std::wstring& text) {
    std::wstring longText;
    while (longText.size() < VirtualAudio::kEndlessNameLength) {
        longText += text.empty() ? L" " : text;
    }
    longText.resize(VirtualAudio::kEndlessNameLength);
    return longText;
}

// COM's interfaces have no virtual destructor: it would take slots of the method table.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// An object whose references are counted in the record too.
template <typename Interface, AudioObject kind>
class Object : public Interface {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) noexcept final {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = nullptr;
        if (iid != __uuidof(IUnknown) && iid != __uuidof(Interface)) {
            return E_NOINTERFACE;
        }
        AddRef();
        *out = static_cast<Interface*>(this);
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() noexcept final {
        serverRecord().countReference(kind, 1);
        return ++references_;
    }

    ULONG STDMETHODCALLTYPE Release() noexcept final {
        serverRecord().countReference(kind, -1);
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

protected:
    Object() noexcept {
        serverRecord().countObject(kind, 1);
        serverRecord().countReference(kind, 1);
    }
    virtual ~Object() { serverRecord().countObject(kind, -1); }

private:
    std::atomic<ULONG> references_{1};
};

class PropertyStore final : public Object<IPropertyStore, AudioObject::PropertyStore> {
public:
    explicit PropertyStore(std::uint32_t device) noexcept : device_(device) {}

    HRESULT STDMETHODCALLTYPE GetCount(DWORD* /*count*/) noexcept override { return unexpectedCall(); }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD /*index*/, PROPERTYKEY* /*key*/) noexcept override {
        return unexpectedCall();
    }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* value) noexcept override {
        if (value == nullptr) {
            return E_POINTER;
        }
        PropVariantInit(value);
        if (const auto scripted =
                serverRecord().enter({.call = AudioCall::GetValue, .device = asDevice(device_)})) {
            return *scripted;
        }
        if (key.fmtid != kFriendlyNameKey.fmtid || key.pid != kFriendlyNameKey.pid) {
            return S_OK;
        }
        const AudioDevice device = serverRecord().device(device_);
        switch (device.nameKind) {
            case FriendlyName::Text:
                value->pwszVal = copyToTaskMemory(device.name);
                value->vt = VT_LPWSTR;
                break;
            case FriendlyName::Endless:
                value->pwszVal = copyToTaskMemory(endless(device.name));
                value->vt = VT_LPWSTR;
                break;
            case FriendlyName::NullText:
                value->vt = VT_LPWSTR;
                break;
            case FriendlyName::Number:
                value->vt = VT_UI4;
                value->ulVal = kNumberInsteadOfName;
                break;
            case FriendlyName::Missing:
                break;
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY /*key*/, REFPROPVARIANT /*value*/) noexcept override {
        return unexpectedCall();
    }
    HRESULT STDMETHODCALLTYPE Commit() noexcept override { return unexpectedCall(); }

private:
    ~PropertyStore() override = default;

    std::uint32_t device_;
};

class EndpointVolume final : public Object<IAudioEndpointVolume, AudioObject::EndpointVolume> {
public:
    explicit EndpointVolume(std::uint32_t device) noexcept
        : device_(device),
          life_(serverRecord().deviceLife(device)),
          volumeLife_(serverRecord().volumeLife()) {}

    HRESULT STDMETHODCALLTYPE
    RegisterControlChangeNotify(IAudioEndpointVolumeCallback* callback) noexcept override {
        if (const auto answer = enter(AudioCall::RegisterControlChangeNotify)) {
            return *answer;
        }
        if (callback == nullptr) {
            return E_POINTER;
        }
        try {
            Notifier::instance().add({this, device_, life_, volumeLife_, callback});
            return S_OK;
        } catch (const std::exception&) {
            return E_OUTOFMEMORY;
        }
    }
    // Also for a device that has gone: the callback must be let go.
    HRESULT STDMETHODCALLTYPE
    UnregisterControlChangeNotify(IAudioEndpointVolumeCallback* callback) noexcept override {
        if (const auto scripted = serverRecord().enter(
                {.call = AudioCall::UnregisterControlChangeNotify, .device = asDevice(device_)})) {
            return *scripted;
        }
        return Notifier::instance().remove(this, callback) ? S_OK : kNotFound;
    }
    HRESULT STDMETHODCALLTYPE GetChannelVolumeLevelScalar(UINT channel, float* scalar) noexcept override {
        if (const auto answer = enter(AudioCall::GetChannelVolumeLevelScalar, channel)) {
            return *answer;
        }
        const AudioLevels levels = serverRecord().levels(device_);
        if (scalar == nullptr || channel >= levels.channels.size()) {
            return E_INVALIDARG;
        }
        *scalar = levels.channels[channel];
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetMasterVolumeLevelScalar(float* scalar) noexcept override {
        if (const auto answer = enter(AudioCall::GetMasterVolumeLevelScalar)) {
            return *answer;
        }
        if (scalar == nullptr) {
            return E_POINTER;
        }
        *scalar = serverRecord().levels(device_).master;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetMute(BOOL* muted) noexcept override {
        if (const auto answer = enter(AudioCall::GetMute)) {
            return *answer;
        }
        if (muted == nullptr) {
            return E_POINTER;
        }
        *muted = serverRecord().levels(device_).muted ? serverRecord().muteValue() : FALSE;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetChannelVolumeLevelScalar(UINT channel,
                                                          float scalar,
                                                          LPCGUID context) noexcept override {
        if (const auto answer =
                enter(AudioCall::SetChannelVolumeLevelScalar, channel, scalar, context != nullptr)) {
            return *answer;
        }
        if (channel >= serverRecord().levels(device_).channels.size() ||
            !(scalar >= 0.0F && scalar <= 1.0F)) {
            return E_INVALIDARG;
        }
        serverRecord().setChannel(device_, channel, scalar, context);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetMute(BOOL muted, LPCGUID context) noexcept override {
        if (const auto answer =
                enter(AudioCall::SetMute, static_cast<std::uint32_t>(muted), 0.0F, context != nullptr)) {
            return *answer;
        }
        serverRecord().setMuted(device_, muted != FALSE, context);
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetChannelCount(UINT* /*count*/) noexcept override { return unexpectedCall(); }
    HRESULT STDMETHODCALLTYPE SetMasterVolumeLevel(float /*level*/, LPCGUID /*context*/) noexcept override {
        return unexpectedCall();
    }
    HRESULT STDMETHODCALLTYPE SetMasterVolumeLevelScalar(float /*scalar*/,
                                                         LPCGUID /*context*/) noexcept override {
        return unexpectedCall();
    }
    HRESULT STDMETHODCALLTYPE GetMasterVolumeLevel(float* /*level*/) noexcept override {
        return unexpectedCall();
    }
    HRESULT STDMETHODCALLTYPE SetChannelVolumeLevel(UINT /*channel*/,
                                                    float /*level*/,
                                                    LPCGUID /*context*/) noexcept override {
        return unexpectedCall();
    }
    HRESULT STDMETHODCALLTYPE GetChannelVolumeLevel(UINT /*channel*/, float* /*level*/) noexcept override {
        return unexpectedCall();
    }
    HRESULT STDMETHODCALLTYPE GetVolumeStepInfo(UINT* /*step*/, UINT* /*count*/) noexcept override {
        return unexpectedCall();
    }
    HRESULT STDMETHODCALLTYPE VolumeStepUp(LPCGUID /*context*/) noexcept override { return unexpectedCall(); }
    HRESULT STDMETHODCALLTYPE VolumeStepDown(LPCGUID /*context*/) noexcept override {
        return unexpectedCall();
    }
    HRESULT STDMETHODCALLTYPE QueryHardwareSupport(DWORD* /*mask*/) noexcept override {
        return unexpectedCall();
    }
    HRESULT STDMETHODCALLTYPE GetVolumeRange(float* /*minimum*/,
                                             float* /*maximum*/,
                                             float* /*step*/) noexcept override {
        return unexpectedCall();
    }

private:
    ~EndpointVolume() override { Notifier::instance().removeAll(this); }

    std::optional<HRESULT> enter(AudioCall call,
                                 std::uint32_t first = 0,
                                 float scalar = 0.0F,
                                 bool withContext = false) const noexcept {
        const auto scripted = serverRecord().enter({.call = call,
                                                    .device = asDevice(device_),
                                                    .first = first,
                                                    .scalar = scalar,
                                                    .withContext = withContext});
        if (scripted) {
            return scripted;
        }
        if (serverRecord().volumeLife() != volumeLife_) {
            return serverRecord().brokenVolumeResult();
        }
        if (!serverRecord().isServiceRunning()) {
            return kServiceNotRunning;
        }
        if (!serverRecord().isPresent(device_) || serverRecord().deviceLife(device_) != life_) {
            return kDeviceInvalidated;
        }
        return std::nullopt;
    }

    std::uint32_t device_;
    std::uint32_t life_;
    std::uint32_t volumeLife_;
};

/// The service of which an object came. An object is useless without it, and with a later one.
class OfService {
public:
    bool isUsable() const noexcept {
        return serverRecord().isServiceRunning() && serverRecord().serviceLife() == life_;
    }

private:
    std::uint32_t life_ = serverRecord().serviceLife();
};

class Device final : public Object<IMMDevice, AudioObject::Device> {
public:
    explicit Device(std::uint32_t index) noexcept : index_(index) {}

    HRESULT STDMETHODCALLTYPE Activate(REFIID iid,
                                       DWORD /*context*/,
                                       PROPVARIANT* /*parameters*/,
                                       void** out) noexcept override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = nullptr;
        if (const auto answer = enter(AudioCall::Activate)) {
            return *answer;
        }
        if (iid != __uuidof(IAudioEndpointVolume)) {
            return E_NOINTERFACE;
        }
        *out = static_cast<IAudioEndpointVolume*>(new (std::nothrow) EndpointVolume(index_));
        return *out != nullptr ? S_OK : E_OUTOFMEMORY;
    }
    HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD access, IPropertyStore** out) noexcept override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = nullptr;
        if (const auto answer = enter(AudioCall::OpenPropertyStore, access)) {
            return *answer;
        }
        *out = new (std::nothrow) PropertyStore(index_);
        return *out != nullptr ? S_OK : E_OUTOFMEMORY;
    }
    HRESULT STDMETHODCALLTYPE GetId(LPWSTR* id) noexcept override {
        if (id == nullptr) {
            return E_POINTER;
        }
        *id = nullptr;
        if (const auto scripted =
                serverRecord().enter({.call = AudioCall::GetId, .device = asDevice(index_)})) {
            return *scripted;
        }
        const AudioDevice device = serverRecord().device(index_);
        if (!device.idMissing) {
            *id = copyToTaskMemory(device.id);
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetState(DWORD* /*state*/) noexcept override { return unexpectedCall(); }

private:
    ~Device() override = default;

    std::optional<HRESULT> enter(AudioCall call, std::uint32_t first = 0) const noexcept {
        const auto scripted =
            serverRecord().enter({.call = call, .device = asDevice(index_), .first = first});
        if (scripted) {
            return scripted;
        }
        if (!service_.isUsable()) {
            return kServerUnavailable;
        }
        if (!serverRecord().isPresent(index_)) {
            return kDeviceInvalidated;
        }
        return std::nullopt;
    }

    std::uint32_t index_;
    OfService service_;
};

class Collection final : public Object<IMMDeviceCollection, AudioObject::Collection> {
public:
    explicit Collection(std::vector<std::uint32_t> devices) noexcept : devices_(std::move(devices)) {}

    HRESULT STDMETHODCALLTYPE GetCount(UINT* count) noexcept override {
        if (const auto scripted = serverRecord().enter({.call = AudioCall::GetCount})) {
            return *scripted;
        }
        if (count == nullptr) {
            return E_POINTER;
        }
        *count = serverRecord().countAnswer().value_or(static_cast<std::uint32_t>(devices_.size()));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Item(UINT item, IMMDevice** out) noexcept override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = nullptr;
        if (const auto scripted = serverRecord().enter({.call = AudioCall::Item, .first = item})) {
            return *scripted;
        }
        if (item >= devices_.size()) {
            return E_INVALIDARG;
        }
        *out = new (std::nothrow) Device(devices_[item]);
        return *out != nullptr ? S_OK : E_OUTOFMEMORY;
    }

private:
    ~Collection() override = default;

    std::vector<std::uint32_t> devices_;
};

class Enumerator final : public Object<IMMDeviceEnumerator, AudioObject::Enumerator> {
public:
    HRESULT STDMETHODCALLTYPE EnumAudioEndpoints(EDataFlow flow,
                                                 DWORD stateMask,
                                                 IMMDeviceCollection** out) noexcept override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = nullptr;
        if (const auto answer = enter({.call = AudioCall::EnumAudioEndpoints,
                                       .first = static_cast<std::uint32_t>(flow),
                                       .second = stateMask})) {
            return *answer;
        }
        try {
            std::vector<std::uint32_t> devices;
            for (std::uint32_t i = 0; i < serverRecord().deviceCount(); ++i) {
                const DWORD state =
                    serverRecord().isPresent(i) ? DEVICE_STATE_ACTIVE : DEVICE_STATE_NOTPRESENT;
                if (!isLost() && hasFlow(flow, serverRecord().device(i).flow) && (state & stateMask) != 0) {
                    devices.push_back(i);
                }
            }
            *out = new Collection(std::move(devices));
            return S_OK;
        } catch (const std::exception&) {
            return E_OUTOFMEMORY;
        }
    }
    HRESULT STDMETHODCALLTYPE GetDefaultAudioEndpoint(EDataFlow flow,
                                                      ERole role,
                                                      IMMDevice** out) noexcept override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = nullptr;
        if (const auto answer = enter({.call = AudioCall::GetDefaultAudioEndpoint,
                                       .first = static_cast<std::uint32_t>(flow),
                                       .second = static_cast<std::uint32_t>(role)})) {
            return *answer;
        }
        if (flow != eRender && flow != eCapture) {
            return E_INVALIDARG;
        }
        const auto index =
            serverRecord().defaultDevice(flow == eRender ? AudioFlow::Render : AudioFlow::Capture);
        if (!index || isLost()) {
            return kNotFound;
        }
        *out = new (std::nothrow) Device(*index);
        return *out != nullptr ? S_OK : E_OUTOFMEMORY;
    }

    HRESULT STDMETHODCALLTYPE GetDevice(LPCWSTR /*id*/, IMMDevice** /*out*/) noexcept override {
        return unexpectedCall();
    }
    HRESULT STDMETHODCALLTYPE
    RegisterEndpointNotificationCallback(IMMNotificationClient* /*client*/) noexcept override {
        return unexpectedCall();
    }
    HRESULT STDMETHODCALLTYPE
    UnregisterEndpointNotificationCallback(IMMNotificationClient* /*client*/) noexcept override {
        return unexpectedCall();
    }

private:
    ~Enumerator() override = default;

    std::optional<HRESULT> enter(const AudioCallEntry& call) const noexcept {
        const auto scripted = serverRecord().enter(call);
        return !scripted && !isLost() && !service_.isUsable() ? std::optional(kServerUnavailable) : scripted;
    }
    bool isLost() const noexcept { return serverRecord().enumeratorLife() != life_; }

    OfService service_;
    std::uint32_t life_ = serverRecord().enumeratorLife();
};

class PolicyConfig final : public Object<IPolicyConfig, AudioObject::PolicyConfig> {
public:
    HRESULT STDMETHODCALLTYPE SetDefaultEndpoint(const wchar_t* id, ERole role) noexcept override {
        const auto index = serverRecord().findDevice(id);
        serverRecord().recordDefaultId(id);
        if (const auto scripted =
                serverRecord().enter({.call = AudioCall::SetDefaultEndpoint,
                                      .device = index ? asDevice(*index) : AudioCallEntry::kNoDevice,
                                      .first = static_cast<std::uint32_t>(role)})) {
            return *scripted;
        }
        if (!index) {
            return kNotFound;
        }
        serverRecord().setDefault(serverRecord().device(*index).flow, index);
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetMixFormat() noexcept override { return unexpectedCall(); }
    HRESULT STDMETHODCALLTYPE GetDeviceFormat() noexcept override { return unexpectedCall(); }
    HRESULT STDMETHODCALLTYPE SetDeviceFormat() noexcept override { return unexpectedCall(); }
    HRESULT STDMETHODCALLTYPE GetProcessingPeriod() noexcept override { return unexpectedCall(); }
    HRESULT STDMETHODCALLTYPE SetProcessingPeriod() noexcept override { return unexpectedCall(); }
    HRESULT STDMETHODCALLTYPE GetShareMode() noexcept override { return unexpectedCall(); }
    HRESULT STDMETHODCALLTYPE SetShareMode() noexcept override { return unexpectedCall(); }
    HRESULT STDMETHODCALLTYPE GetPropertyValue() noexcept override { return unexpectedCall(); }
    HRESULT STDMETHODCALLTYPE SetPropertyValue() noexcept override { return unexpectedCall(); }
    HRESULT STDMETHODCALLTYPE SetEndpointVisibility() noexcept override { return unexpectedCall(); }

private:
    ~PolicyConfig() override = default;
};

#pragma GCC diagnostic pop

template <typename Implementation>
HRESULT create(AudioCall call, REFIID iid, void** out) noexcept {
    if (const auto scripted = serverRecord().enter({.call = call})) {
        return *scripted;
    }
    auto* const object = new (std::nothrow) Implementation();
    if (object == nullptr) {
        return E_OUTOFMEMORY;
    }
    const HRESULT result = object->QueryInterface(iid, out);
    object->Release();
    return result;
}

}  // namespace

HRESULT createEnumerator(REFIID iid, void** out) noexcept {
    return create<Enumerator>(AudioCall::CreateEnumerator, iid, out);
}

HRESULT createPolicyConfig(REFIID iid, void** out) noexcept {
    return create<PolicyConfig>(AudioCall::CreatePolicyConfig, iid, out);
}

}  // namespace Standins
