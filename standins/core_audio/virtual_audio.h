#pragma once

#include <windows.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "framework/core/unique_resource.h"
#include "standins/shared_record.h"

namespace Standins {

/// What the stand-in is asked for; the record counts the calls of each. `Other` stands for every method that
/// the stand-in has but does not implement.
enum class AudioCall : std::uint32_t {
    CreateEnumerator,
    CreatePolicyConfig,
    EnumAudioEndpoints,
    GetDefaultAudioEndpoint,
    GetCount,
    Item,
    Activate,
    OpenPropertyStore,
    GetId,
    GetValue,
    RegisterControlChangeNotify,
    UnregisterControlChangeNotify,
    GetChannelVolumeLevelScalar,
    GetMasterVolumeLevelScalar,
    GetMute,
    SetChannelVolumeLevelScalar,
    SetMute,
    SetDefaultEndpoint,
    Other,
};

inline constexpr std::size_t kAudioCallCount = 19;

/// What becomes of a callback.
enum class CallbackEvent : std::uint32_t {
    Registered,
    /// The server gave the last reference up.
    Freed,
    /// Its registration ended only because the endpoint volume went.
    Abandoned,
};

inline constexpr std::size_t kCallbackEventCount = 3;

/// Kinds of objects that the stand-in hands out.
enum class AudioObject : std::uint32_t {
    Enumerator,
    Collection,
    Device,
    PropertyStore,
    EndpointVolume,
    PolicyConfig,
};

inline constexpr std::size_t kAudioObjectCount = 6;

enum class AudioFlow : std::uint32_t { Render, Capture };

inline constexpr std::size_t kAudioFlowCount = 2;

/// What a device's property store says when it is asked for the friendly name.
enum class FriendlyName : std::uint32_t {
    Text,      ///< The device's name.
    Missing,   ///< VT_EMPTY.
    NullText,  ///< VT_LPWSTR with a null pointer.
    Number,    ///< VT_UI4.
    Endless,   ///< The device's name over and over, VirtualAudio::kEndlessNameLength characters.
};

/// One call in the order in which the calls came.
struct AudioCallEntry {
    static constexpr std::int32_t kNoDevice = -1;

    std::uint64_t timeUs = 0;  ///< nowMicroseconds() at the call.
    std::uint32_t threadId = 0;
    AudioCall call = AudioCall::Other;
    std::int32_t device = kNoDevice;  ///< Index of the device that the call is about.
    std::uint32_t first = 0;   ///< Data flow, item, channel or mute state; the role of SetDefaultEndpoint.
    std::uint32_t second = 0;  ///< State mask of EnumAudioEndpoints, role of GetDefaultAudioEndpoint.
    float scalar = 0.0F;       ///< Volume of SetChannelVolumeLevelScalar.
    bool withContext = false;  ///< An event context was passed.
};

/// Volumes as scalars, and the mute state. The stand-in takes any number for a volume.
struct AudioLevels {
    /// At most VirtualAudio::kMaxChannels.
    std::vector<float> channels;
    float master = 0.0F;
    bool muted = false;
};

struct AudioDevice {
    AudioFlow flow = AudioFlow::Render;
    /// At most VirtualAudio::kTextLength - 1 characters, as for the name.
    std::wstring id;
    /// The device's GetId succeeds with a null string.
    bool idMissing = false;
    std::wstring name;
    FriendlyName nameKind = FriendlyName::Text;
    AudioLevels levels;
};

/// A notification that need not fit the device it is sent for.
struct AudioNotice {
    GUID context{};
    AudioLevels levels;
    /// OnNotify is called with a null pointer.
    bool null = false;
};

/// A call that is to fail: the first `skip` calls go well, then `times` calls (0: all) only null what they
/// would hand out and return `result`, which may be S_OK.
struct AudioFailure {
    HRESULT result = E_FAIL;
    std::uint32_t skip = 0;
    std::uint32_t times = 0;
};

/// The virtual sound system: one shared record in which the stand-in server writes what the program does, and
/// from which it takes what the program is to be told. Simulator and tests are on the other side, in the
/// program's process or in another. A new record has no devices. Only one process may add devices.
///
/// Every change of a device's levels, whoever makes it, is followed by a notification to the callbacks that
/// are registered for the device, one after the other and from a thread of the server's own.
class VirtualAudio {
public:
    static constexpr std::size_t kMaxDevices = 32;
    static constexpr std::size_t kMaxChannels = 8;
    static constexpr std::size_t kTextLength = 128;
    static constexpr std::size_t kEndlessNameLength = 65'536;
    /// Notices that may wait at one time; older ones are lost.
    static constexpr std::size_t kNoticeQueueLength = 256;

    /// Opens the record, or makes it. Throws std::runtime_error when that fails.
    VirtualAudio();

    // The devices.

    /// Adds a device, present and unmuted as given, and returns its index; std::nullopt when all are in use.
    std::optional<std::uint32_t> addDevice(const AudioDevice& device);
    /// Three pairs of speakers and a microphone, the first of each being the default.
    void addUsualDevices();
    std::uint32_t deviceCount() const noexcept;
    AudioDevice device(std::uint32_t index) const;
    /// A device that is not present is not listed, cannot be the default one, and fails every call with
    /// AUDCLNT_E_DEVICE_INVALIDATED but for GetId. When it comes back, the endpoint volumes from before go on
    /// failing, and their callbacks are not notified any more.
    void setPresent(std::uint32_t index, bool present) noexcept;
    bool isPresent(std::uint32_t index) const noexcept;
    /// std::nullopt: there is no default device.
    void setDefault(AudioFlow flow, std::optional<std::uint32_t> index) noexcept;
    std::optional<std::uint32_t> defaultDevice(AudioFlow flow) const noexcept;
    /// Changes a device as its owner would, in the system's volume control. The number of channels stays.
    void setLevels(std::uint32_t index, const AudioLevels& levels);
    AudioLevels levels(std::uint32_t index) const;
    /// What a collection says of its size; std::nullopt, as at first: the truth.
    void setCountAnswer(std::optional<std::uint32_t> count) noexcept;
    std::optional<std::uint32_t> countAnswer() const noexcept;
    /// What GetMute says of a muted device, 1 at first.
    void setMuteValue(std::int32_t value) noexcept;
    std::int32_t muteValue() const noexcept;

    /// The audio service, which runs at first. Without it an enumerator can be made, but fails every call
    /// with RPC_S_SERVER_UNAVAILABLE, as devices do; endpoint volumes fail with
    /// AUDCLNT_E_SERVICE_NOT_RUNNING. When it is back, the enumerators and devices that it had before go on
    /// failing; its endpoint volumes are those of devices that were taken away.
    void setServiceRunning(bool running) noexcept;
    bool isServiceRunning() const noexcept;

    /// As after the end of the service or a change of the remote session: enumerators that exist find no
    /// device any more, whatever there is, and say "not found" without a failure that would tell why.
    void loseEnumerators() noexcept;
    /// Endpoint volumes that exist return `result` from every call for ever, and their callbacks are not
    /// notified any more; the devices and new volumes are good.
    void breakVolumes(HRESULT result) noexcept;

    // Failures and notifications.

    void failCall(AudioCall call, const AudioFailure& failure) noexcept;
    void clearFailures() noexcept;
    /// Calls of that kind take so long from now on.
    void setDuration(AudioCall call, std::uint32_t milliseconds) noexcept;
    /// Notifies the callbacks of the device, whose levels stay.
    void postNotice(std::uint32_t index, const AudioNotice& notice) noexcept;
    /// Waits until the server has delivered what was posted until now. False after `limit`, as when no
    /// callback was ever registered.
    bool settle(std::chrono::milliseconds limit = std::chrono::seconds(10)) const;
    /// From now on so many threads notify every callback of its device's levels, without a pause. Waits until
    /// they are all running, or all have ended; false after ten seconds. At most kMaxFloodThreads.
    bool setFlood(std::uint32_t threads);
    static constexpr std::uint32_t kMaxFloodThreads = 8;
    /// While on, the server keeps callbacks whose registration ends, and goes on notifying them.
    void setKeepsCallbacks(bool keep) noexcept;
    /// Releases the callbacks that were kept. False after ten seconds.
    bool dropKeptCallbacks();

    // What happened.

    std::uint64_t callCount(AudioCall call) const noexcept;
    /// The newest calls, oldest first.
    std::vector<AudioCallEntry> calls() const;
    /// The id that the latest SetDefaultEndpoint was given.
    std::wstring lastDefaultId() const;
    /// Objects that exist, and references to them.
    std::int32_t liveObjects(AudioObject kind) const noexcept;
    std::int32_t references(AudioObject kind) const noexcept;
    /// All kinds together.
    std::int32_t liveObjects() const noexcept;
    std::uint64_t callbackEvents(CallbackEvent event) const noexcept;
    /// References to callbacks that the server holds; each registration and each running notice is one.
    std::int32_t callbackReferences() const noexcept;
    /// Calls of OnNotify, and what the latest returned.
    std::uint64_t noticesDelivered() const noexcept;
    HRESULT lastNoticeResult() const noexcept;
    /// Thread that made the latest call of OnNotify.
    std::uint32_t lastNoticeThread() const noexcept;

    // The server's side.

    /// Logs the call. What it returns, if anything, is what the call is to return without doing its work.
    std::optional<HRESULT> enter(const AudioCallEntry& call) noexcept;
    /// Grows whenever the device is taken away, and when the service ends: what is of a former life is
    /// useless.
    std::uint32_t deviceLife(std::uint32_t index) const noexcept;
    std::uint32_t serviceLife() const noexcept;
    /// Grow whenever enumerators are lost and volumes break.
    std::uint32_t enumeratorLife() const noexcept;
    std::uint32_t volumeLife() const noexcept;
    HRESULT brokenVolumeResult() const noexcept;
    void recordDefaultId(const wchar_t* id) noexcept;
    void countObject(AudioObject kind, std::int32_t change) noexcept;
    void countReference(AudioObject kind, std::int32_t change) noexcept;
    void countCallbackReference(std::int32_t change) noexcept;
    void countCallbackEvent(CallbackEvent event) noexcept;
    void countNotice(HRESULT result) noexcept;
    std::optional<std::uint32_t> findDevice(const wchar_t* id) const;
    /// Sets one channel; the master volume is that of the loudest. Then notifies.
    void setChannel(std::uint32_t index, std::uint32_t channel, float scalar, const GUID* context);
    void setMuted(std::uint32_t index, bool muted, const GUID* context);

    /// Notices posted so far; the one with number n is read by notice(n), if it is still there.
    std::uint64_t noticesPosted() const noexcept;
    struct PostedNotice {
        std::uint32_t device = 0;
        AudioNotice notice;
    };
    std::optional<PostedNotice> notice(std::uint64_t number) const;
    /// Everything before this number is delivered.
    void setNoticesHandled(std::uint64_t number) noexcept;
    /// Waits until something was posted or asked for; may also return early.
    void waitForWork(std::chrono::milliseconds limit) const noexcept;
    std::uint32_t floodThreadsWanted() const noexcept;
    void countFloodThread(std::int32_t change) noexcept;
    bool keepsCallbacks() const noexcept;
    /// True when kept callbacks are to go; endDrop() tells that they have gone.
    bool dropWanted() const noexcept;
    void endDrop() noexcept;

private:
    struct Record;

    static SharedRecord openRecord();
    Record& record() const noexcept;
    void storeLevels(std::uint32_t index, const AudioLevels& levels) noexcept;

    SharedRecord shared_;
    Panelix::UniqueHandle wake_;
};

}  // namespace Standins
