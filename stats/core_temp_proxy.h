#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "stats/core_temp_abi.h"
#include "stats/core_temp_library.h"

/// One reading of Core Temp: through its reader library, or without that from the shared memory that Core
/// Temp publishes while it runs. Made and destroyed in every pass; cheap enough for that, 20 kB on the stack.
/// The getters are called after a GetData() that returned true and give then what Core Temp has written
/// there, plausible or not, but never more than its record holds.
class CoreTempProxy {
public:
    /// `library` may be null (shared memory is read) and must outlive the object.
    explicit CoreTempProxy(const CoreTempLibrary* library);
    ~CoreTempProxy();
    CoreTempProxy(const CoreTempProxy&) = delete;
    CoreTempProxy& operator=(const CoreTempProxy&) = delete;

    /// Takes a reading. False when Core Temp is not running.
    bool GetData();

    bool IsFahrenheit();
    /// In the ANSI code page, at most 100 characters; valid as long as the object.
    std::string_view GetCPUName() const;
    /// MHz.
    float GetCPUSpeed() const;
    /// MHz.
    float GetFSBSpeed() const;
    float GetMultiplier() const;
    /// Volts.
    float GetVID() const;
    unsigned GetCPUCount() const;
    /// Cores of each CPU.
    unsigned GetCoreCount() const;
    /// Temperature of the core at `index`, core + GetCoreCount() * CPU; 0 for an index beyond the record.
    float GetTemp(int index) const;

private:
    bool readSharedMemory();

    const CoreTempLibrary* library_;
    /// The library's object; unused without library.
    alignas(CoreTemp::kProxyAlignment) std::array<std::byte, CoreTemp::kProxyBytes> object_;
    /// A copy of the shared memory; unused with library.
    CoreTemp::SharedRecord record_{};
};
