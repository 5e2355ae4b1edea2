#include "framework/core/local_time.h"

#include <cstdlib>

namespace Panelix {

namespace {

__time64_t zoneReadAt = -1;

// By itself the runtime reads the zone once. And it prefers TZ to the system's zone, of which it knows a form
// of its own only: a text such as "Europe/Berlin" means universal time to it, with America's daylight-saving
// rules.
void readSystemZone() {
    _putenv("TZ=");
    _tzset();
}

}  // namespace

std::tm localTime() {
    const __time64_t now = _time64(nullptr);
    if (now != zoneReadAt) {
        readSystemZone();
        zoneReadAt = now;
    }
    std::tm local{};
    if (_localtime64_s(&local, &now) != 0) {
        // The runtime fills the record with -1 then.
        local = {};
    }
    return local;
}

}  // namespace Panelix
