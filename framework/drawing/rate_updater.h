#pragma once

#include <cstdint>

namespace Panelix {

/// Base of a data source that refreshes itself at a fixed period, however often it is ticked. No thread and
/// no timer: its owner calls tick() as often as it likes. One thread.
///
/// The clock counts the time for which the machine is awake: setting the wall clock neither stops the updates
/// nor bunches them, and a night in standby or hibernation is not caught up with. It moves in ticks of up to
/// 15.6 ms, so an update may come that much late; the schedule does not add these delays up.
class RateUpdater {
public:
    /// `periodMs`: time between two updates in milliseconds.
    explicit RateUpdater(std::int64_t periodMs);
    virtual ~RateUpdater() = default;

    /// One refresh of the derived class's data.
    virtual void update() = 0;

    RateUpdater(const RateUpdater&) = delete;
    RateUpdater& operator=(const RateUpdater&) = delete;

    /// Calls update() when a period has passed, and at the very first call.
    void tick();

    /// The same at a given time in milliseconds, at least 0 and of the same clock in every call. The schedule
    /// advances by whole periods, so it does not drift with the caller's timing; after a stall each call
    /// updates once until the schedule has caught up. A time before the last update updates nothing.
    void tickAt(std::int64_t nowMs);

private:
    static constexpr std::int64_t kNever = -1;

    std::int64_t periodMs_;
    std::int64_t lastUpdateMs_ = kNever;
};

}  // namespace Panelix
