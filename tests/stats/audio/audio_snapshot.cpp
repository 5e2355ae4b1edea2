#include "tests/stats/audio/audio_snapshot.h"

AudioSnapshot AudioSnapshot::of(const SystemInfo& info) {
    return {info.speakerLeftVolume,
            info.speakerRightVolume,
            info.speakerMasterVolume,
            info.speakerMuted,
            info.microphoneMuted};
}

std::ostream& operator<<(std::ostream& stream, const AudioSnapshot& snapshot) {
    return stream << "left " << snapshot.left << ", right " << snapshot.right << ", master "
                  << snapshot.master << (snapshot.speakerMuted ? ", speaker muted" : "")
                  << (snapshot.microphoneMuted ? ", microphone muted" : "");
}
