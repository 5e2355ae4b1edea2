#pragma once

#include <windows.h>

#include <sddl.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "framework/core/unique_resource.h"

/// A key of the (perhaps redirected) current user that nobody may read for as long as the object lives.
class DeniedKey {
public:
    explicit DeniedKey(std::wstring path) : path_(std::move(path)) {
        setAccess(L"D:(D;;KR;;;WD)(A;;KA;;;WD)");
        Panelix::UniqueHkey key;
        EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, KEY_READ, key.put()),
                  ERROR_ACCESS_DENIED);
    }
    ~DeniedKey() { setAccess(L"D:(A;;KA;;;WD)"); }
    DeniedKey(const DeniedKey&) = delete;
    DeniedKey& operator=(const DeniedKey&) = delete;

private:
    void setAccess(const wchar_t* accessList) {
        Panelix::UniqueHkey key;
        EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, WRITE_DAC, key.put()), ERROR_SUCCESS);
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(
            accessList, SDDL_REVISION_1, &descriptor, nullptr));
        EXPECT_EQ(RegSetKeySecurity(key.get(), DACL_SECURITY_INFORMATION, descriptor), ERROR_SUCCESS);
        LocalFree(descriptor);
    }

    std::wstring path_;
};
