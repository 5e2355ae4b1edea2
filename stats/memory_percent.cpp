#include "stats/memory_percent.h"

std::int32_t physicalMemoryPercent(std::uint64_t total, std::uint64_t available) {
    if (total == 0 || available > total) {
        return 0;
    }
    const auto roundedTotal = static_cast<double>(static_cast<float>(total));
    return static_cast<std::int32_t>(static_cast<double>(total - available) / roundedTotal * 100.0);
}

std::int32_t videoMemoryPercent(std::uint32_t total, std::uint32_t available) {
    if (total == 0 || available > total) {
        return 0;
    }
    return static_cast<std::int32_t>(static_cast<double>(total - available) / static_cast<double>(total) *
                                     100.0);
}
