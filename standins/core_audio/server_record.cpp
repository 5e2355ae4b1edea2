#include "standins/core_audio/server_record.h"

#include <exception>

namespace Standins {

VirtualAudio* openServerRecord() noexcept {
    static VirtualAudio* const record = []() noexcept -> VirtualAudio* {
        try {
            return new VirtualAudio();
        } catch (const std::exception&) {
            return nullptr;
        }
    }();
    return record;
}

VirtualAudio& serverRecord() noexcept {
    return *openServerRecord();
}

}  // namespace Standins
