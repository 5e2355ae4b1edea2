#pragma once

#include <cstdint>
#include <ostream>

#include "stats/system_info.h"

/// The fields of a sampler that come from Core Audio.
struct AudioSnapshot {
    std::int32_t left = 0;
    std::int32_t right = 0;
    std::int32_t master = 0;
    bool speakerMuted = false;
    bool microphoneMuted = false;

    static AudioSnapshot of(const SystemInfo& info);

    bool operator==(const AudioSnapshot&) const = default;
};

/// How test messages show it.
std::ostream& operator<<(std::ostream& stream, const AudioSnapshot& snapshot);
