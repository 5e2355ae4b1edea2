#pragma once

#include <string>

/// One row of the list of speaker devices.
struct AudioDeviceEntry {
    /// Core Audio's id string of the endpoint.
    std::wstring id;
    /// The name that people know the device by; may be empty.
    std::wstring name;
};
