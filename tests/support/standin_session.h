#pragma once

#include "standins/shared_record.h"

/// Makes the stand-ins of this process its own: the first member of a fixture, before any stand-in.
struct StandinSession {
    StandinSession() { Standins::useOwnSession(); }
};
