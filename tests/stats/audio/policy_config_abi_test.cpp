#include "stats/policy_config_abi.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <utility>

namespace {

constexpr std::size_t kSlots = 14;
constexpr std::size_t kSetDefaultEndpointOffset = 96;

struct Call {
    std::size_t offset = 0;
    const wchar_t* id = nullptr;
    int role = -1;
};

Call seen;

/// Stands in every slot of a method table, and notes from which one it was called.
template <std::size_t slot>
HRESULT STDMETHODCALLTYPE noteCall(void* /*object*/, const wchar_t* id, int role) {
    seen = {slot * sizeof(void*), id, role};
    return S_FALSE;
}

using Method = HRESULT(void* object, const wchar_t* id, int role);

/// An object as COM knows it: a pointer to a table of methods.
struct RawObject {
    Method* const* methods;
};

template <std::size_t... slots>
RawObject rawObject(std::index_sequence<slots...> /*all*/) {
    static Method* const table[] = {&noteCall<slots>...};
    return {table};
}

TEST(PolicyConfigAbi, SetDefaultEndpointIsTheThirteenthMethod) {
    RawObject object = rawObject(std::make_index_sequence<kSlots>());
    // The compiler must not know what stands behind the pointer.
    auto* volatile policy = reinterpret_cast<IPolicyConfig*>(&object);
    EXPECT_EQ(policy->SetDefaultEndpoint(L"some device", eCommunications), S_FALSE);
    EXPECT_EQ(seen.offset, kSetDefaultEndpointOffset);
    EXPECT_STREQ(seen.id, L"some device");
    EXPECT_EQ(seen.role, eCommunications);
}

TEST(PolicyConfigAbi, LastMethodIsTheFourteenth) {
    RawObject object = rawObject(std::make_index_sequence<kSlots>());
    auto* volatile policy = reinterpret_cast<IPolicyConfig*>(&object);
    policy->SetEndpointVisibility();
    EXPECT_EQ(seen.offset, kSetDefaultEndpointOffset + sizeof(void*));
}

TEST(PolicyConfigAbi, IdsAreThoseOfTheOlderObject) {
    OLECHAR text[64];
    StringFromGUID2(PolicyConfigAbi::kClass, text, static_cast<int>(std::size(text)));
    EXPECT_STREQ(text, L"{294935CE-F637-4E7C-A41B-AB255460B862}");
    StringFromGUID2(__uuidof(IPolicyConfig), text, static_cast<int>(std::size(text)));
    EXPECT_STREQ(text, L"{568B9108-44BF-40B4-9006-86AFE5B5A620}");
}

}  // namespace
