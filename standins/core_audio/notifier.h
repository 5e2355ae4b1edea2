#pragma once

#include <windows.h>

#include <endpointvolume.h>

#include <cstdint>
#include <mutex>
#include <vector>

namespace Standins {

/// The callbacks that the program has registered in this process, and the threads that notify them. A
/// callback is never called under the notifier's lock, so a notice may still be running, or even begin, when
/// the registration has ended: as in the real system.
class Notifier {
public:
    /// Made by the first call and never destroyed: its threads run to the end of the process.
    static Notifier& instance();

    Notifier(const Notifier&) = delete;
    Notifier& operator=(const Notifier&) = delete;

    /// A callback for a device, in the name of one endpoint volume. In a later life of the device it is not
    /// notified.
    struct Registration {
        const void* volume;
        std::uint32_t device;
        std::uint32_t deviceLife;
        std::uint32_t volumeLife;
        IAudioEndpointVolumeCallback* callback;
    };

    void add(const Registration& registration);
    /// False when it was not registered.
    bool remove(const void* volume, IAudioEndpointVolumeCallback* callback);
    /// Ends what is left of the registrations of an endpoint volume.
    void removeAll(const void* volume);

private:
    Notifier() = default;

    void startThreads();
    void deliverPosted();
    void startFlood();
    void floodUntilUnwanted(std::uint32_t number) noexcept;
    void dropKept();
    /// Copies of the registrations, each with a reference to its callback.
    std::vector<Registration> registrations();

    std::mutex mutex_;
    bool started_ = false;
    std::uint64_t nextNotice_ = 0;
    /// Registrations in force, and callbacks that are kept though theirs has ended (volume is null then).
    std::vector<Registration> registrations_;
    std::uint32_t floodThreads_ = 0;
};

}  // namespace Standins
