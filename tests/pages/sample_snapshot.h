#pragma once

#include "stats/snapshot.h"

/// Sets every figure of the snapshot to an ordinary value: all sources are there, nothing is muted, no mail.
/// dataReady is cleared.
void setOrdinaryFigures(Snapshot& snapshot);
