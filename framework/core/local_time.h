#pragma once

#include <ctime>

namespace Panelix {

/// The current time in the system's time zone, whatever the environment variable TZ says, which goes from
/// this process's environment. A zone that is changed meanwhile counts from the next second on. All zero when
/// the runtime cannot convert. Main thread only.
std::tm localTime();

}  // namespace Panelix
