#include "stats/device_name.h"

#include <propidl.h>
#include <wrl/client.h>

#include <cwchar>

namespace {

// Device's friendly name; the SDK declares the key, but no library of MinGW's defines it.
constexpr PROPERTYKEY kFriendlyNameKey{
    {0xA45C254E, 0xDF1C, 0x4EFD, {0x80, 0x20, 0x67, 0xD1, 0x46, 0xA8, 0x50, 0xE0}}, 14};

/// A property's value; empty at first.
class PropertyValue {
public:
    PropertyValue() = default;
    ~PropertyValue() { PropVariantClear(&value_); }
    PropertyValue(const PropertyValue&) = delete;
    PropertyValue& operator=(const PropertyValue&) = delete;

    PROPVARIANT* put() noexcept { return &value_; }

    /// The beginning of the text, at most `length` characters; empty when the value is no text.
    std::wstring text(std::size_t length) const {
        return value_.vt == VT_LPWSTR && value_.pwszVal != nullptr
                   ? std::wstring(value_.pwszVal, wcsnlen(value_.pwszVal, length))
                   : std::wstring();
    }

private:
    /// All zero is VT_EMPTY.
    PROPVARIANT value_{};
};

}  // namespace

std::wstring friendlyName(IMMDevice& device, std::size_t length) {
    Microsoft::WRL::ComPtr<IPropertyStore> store;
    device.OpenPropertyStore(STGM_READ, &store);
    PropertyValue name;
    if (store != nullptr) {
        store->GetValue(kFriendlyNameKey, name.put());
    }
    return name.text(length);
}
