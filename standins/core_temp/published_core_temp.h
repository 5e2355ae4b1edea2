#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "framework/core/unique_resource.h"
#include "standins/core_temp/virtual_core_temp.h"

namespace Standins {

/// The two records that Core Temp publishes.
enum class CoreTempMapping {
    Original,
    Extended,
};

/// Where Core Temp was started: in the user's session or in session 0, whose objects other sessions reach by
/// the prefix "Global\\" only.
enum class CoreTempSession {
    Users,
    Zero,
};

/// Core Temp as its shared memory shows it: published under the vendor's name for as long as the object
/// lives. The name is the same for all programs of the session.
class PublishedCoreTemp {
public:
    /// Throws std::runtime_error when the system refuses, or when something is published under the name
    /// already.
    explicit PublishedCoreTemp(CoreTempMapping mapping, CoreTempSession session = CoreTempSession::Users);
    /// The same with a section of so many bytes, which hold at least the flag for Fahrenheit.
    PublishedCoreTemp(CoreTempMapping mapping,
                      std::uint32_t bytes,
                      CoreTempSession session = CoreTempSession::Users);

    void setFigures(const CoreTempFigures& figures) noexcept;
    /// At most VirtualCoreTemp::kNameLength bytes; a name that takes all of them has no terminator.
    void setName(std::string_view name) noexcept;

private:
    void setAt(std::size_t offset, const void* value, std::size_t size) noexcept;

    Panelix::UniqueFile file_;
    Panelix::UniqueHandle section_;
    Panelix::UniqueMappedView view_;
};

}  // namespace Standins
