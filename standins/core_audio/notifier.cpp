#include "standins/core_audio/notifier.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <thread>
#include <utility>

#include "standins/core_audio/server_record.h"

namespace Standins {

namespace {

constexpr std::chrono::milliseconds kPollPeriod{10};
constexpr std::size_t kPageBytes = 4096;

void hold(IAudioEndpointVolumeCallback* callback) noexcept {
    callback->AddRef();
    serverRecord().countCallbackReference(1);
}

void letGo(IAudioEndpointVolumeCallback* callback) noexcept {
    if (callback->Release() == 0) {
        serverRecord().countCallbackEvent(CallbackEvent::Freed);
    }
    serverRecord().countCallbackReference(-1);
}

/// Memory for one notice, which ends where a page without any access begins: reading a channel that the
/// notice does not have ends the program.
class NoticeMemory {
public:
    NoticeMemory() noexcept
        : pages_(static_cast<std::byte*>(
              VirtualAlloc(nullptr, 2 * kPageBytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE))) {
        DWORD before;
        if (pages_ != nullptr) {
            VirtualProtect(pages_ + kPageBytes, kPageBytes, PAGE_NOACCESS, &before);
        }
    }
    ~NoticeMemory() {
        if (pages_ != nullptr) {
            VirtualFree(pages_, 0, MEM_RELEASE);
        }
    }
    NoticeMemory(const NoticeMemory&) = delete;
    NoticeMemory& operator=(const NoticeMemory&) = delete;

    /// Null when the memory is missing.
    AUDIO_VOLUME_NOTIFICATION_DATA* write(const AudioNotice& notice) noexcept {
        if (pages_ == nullptr) {
            return nullptr;
        }
        constexpr std::size_t kChannelsOffset = offsetof(AUDIO_VOLUME_NOTIFICATION_DATA, afChannelVolumes);
        const std::vector<float>& channels = notice.levels.channels;
        const std::size_t channelBytes = channels.size() * sizeof(float);
        std::byte* const begin = pages_ + kPageBytes - kChannelsOffset - channelBytes;
        const AUDIO_VOLUME_NOTIFICATION_DATA head{notice.context,
                                                  notice.levels.muted ? TRUE : FALSE,
                                                  notice.levels.master,
                                                  static_cast<UINT>(channels.size()),
                                                  {}};
        std::memcpy(begin, &head, kChannelsOffset);
        if (channelBytes > 0) {
            std::memcpy(begin + kChannelsOffset, channels.data(), channelBytes);
        }
        return reinterpret_cast<AUDIO_VOLUME_NOTIFICATION_DATA*>(begin);
    }

private:
    std::byte* pages_;
};

void notify(IAudioEndpointVolumeCallback* callback, NoticeMemory& memory, const AudioNotice& notice) {
    AUDIO_VOLUME_NOTIFICATION_DATA* const data = memory.write(notice);
    if (data != nullptr) {
        serverRecord().countNotice(callback->OnNotify(notice.null ? nullptr : data));
    }
}

bool isAlive(const Notifier::Registration& registration) {
    return serverRecord().deviceLife(registration.device) == registration.deviceLife &&
           serverRecord().volumeLife() == registration.volumeLife;
}

}  // namespace

Notifier& Notifier::instance() {
    static Notifier& notifier = *new Notifier();
    return notifier;
}

void Notifier::add(const Registration& registration) {
    startThreads();
    const std::lock_guard lock(mutex_);
    registrations_.push_back(registration);
    hold(registration.callback);
    serverRecord().countCallbackEvent(CallbackEvent::Registered);
}

bool Notifier::remove(const void* volume, IAudioEndpointVolumeCallback* callback) {
    {
        const std::lock_guard lock(mutex_);
        const auto found =
            std::find_if(registrations_.begin(), registrations_.end(), [&](const Registration& registration) {
                return registration.volume == volume && registration.callback == callback;
            });
        if (found == registrations_.end()) {
            return false;
        }
        if (serverRecord().keepsCallbacks()) {
            found->volume = nullptr;
            return true;
        }
        registrations_.erase(found);
    }
    letGo(callback);
    return true;
}

void Notifier::removeAll(const void* volume) {
    std::vector<Registration> abandoned;
    {
        const std::lock_guard lock(mutex_);
        const auto rest = std::stable_partition(
            registrations_.begin(), registrations_.end(), [&](const Registration& registration) {
                return registration.volume != volume;
            });
        abandoned.assign(rest, registrations_.end());
        registrations_.erase(rest, registrations_.end());
    }
    for (const Registration& registration : abandoned) {
        serverRecord().countCallbackEvent(CallbackEvent::Abandoned);
        letGo(registration.callback);
    }
}

void Notifier::startThreads() {
    const std::lock_guard lock(mutex_);
    if (std::exchange(started_, true)) {
        return;
    }
    // COM unloads its servers when the last apartment ends, which must not pull the code from under the
    // threads.
    HMODULE self;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&openServerRecord),
                       &self);
    nextNotice_ = serverRecord().noticesPosted();
    serverRecord().setNoticesHandled(nextNotice_);
    std::thread([this] {
        for (;;) {
            serverRecord().waitForWork(kPollPeriod);
            deliverPosted();
            dropKept();
            startFlood();
        }
    }).detach();
}

void Notifier::deliverPosted() {
    VirtualAudio& audio = serverRecord();
    static NoticeMemory& memory = *new NoticeMemory();
    while (nextNotice_ < audio.noticesPosted()) {
        const auto posted = audio.notice(nextNotice_);
        if (!posted && audio.noticesPosted() - nextNotice_ <= VirtualAudio::kNoticeQueueLength) {
            // Its number is taken, its content still being written.
            return;
        }
        ++nextNotice_;
        if (posted) {
            for (const Registration& registration : registrations()) {
                if (registration.device == posted->device && isAlive(registration)) {
                    notify(registration.callback, memory, posted->notice);
                }
                letGo(registration.callback);
            }
        }
        audio.setNoticesHandled(nextNotice_);
    }
}

void Notifier::startFlood() {
    const std::uint32_t wanted = serverRecord().floodThreadsWanted();
    while (floodThreads_ < wanted) {
        const std::uint32_t number = floodThreads_++;
        serverRecord().countFloodThread(1);
        std::thread([this, number] { floodUntilUnwanted(number); }).detach();
    }
    floodThreads_ = wanted;
}

void Notifier::floodUntilUnwanted(std::uint32_t number) noexcept {
    VirtualAudio& audio = serverRecord();
    {
        NoticeMemory memory;
        while (number < audio.floodThreadsWanted()) {
            for (const Registration& registration : registrations()) {
                if (isAlive(registration)) {
                    notify(registration.callback, memory, {GUID{}, audio.levels(registration.device), false});
                }
                letGo(registration.callback);
            }
            SwitchToThread();
        }
    }
    audio.countFloodThread(-1);
}

void Notifier::dropKept() {
    if (!serverRecord().dropWanted()) {
        return;
    }
    std::vector<Registration> kept;
    {
        const std::lock_guard lock(mutex_);
        const auto rest = std::stable_partition(
            registrations_.begin(), registrations_.end(), [](const Registration& registration) {
                return registration.volume != nullptr;
            });
        kept.assign(rest, registrations_.end());
        registrations_.erase(rest, registrations_.end());
    }
    for (const Registration& registration : kept) {
        letGo(registration.callback);
    }
    serverRecord().endDrop();
}

std::vector<Notifier::Registration> Notifier::registrations() {
    const std::lock_guard lock(mutex_);
    for (const Registration& registration : registrations_) {
        hold(registration.callback);
    }
    return registrations_;
}

}  // namespace Standins
