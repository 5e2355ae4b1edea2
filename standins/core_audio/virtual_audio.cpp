#include "standins/core_audio/virtual_audio.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <stdexcept>
#include <string_view>

#include "standins/call_log.h"
#include "standins/shared_text.h"
#include "standins/wait_until.h"

namespace Standins {

namespace {

// "KAUD" and the version of the layout below: raise it with every change.
constexpr std::uint64_t kIdentity = 0x4B41'5544'0000'0006;
constexpr std::chrono::seconds kHandshakeLimit{10};

using Text = SharedText<wchar_t, VirtualAudio::kTextLength - 1>;

struct LevelsSlot {
    std::atomic<std::uint32_t> channelCount;
    std::array<std::atomic<float>, VirtualAudio::kMaxChannels> channels;
    std::atomic<float> master;
    std::atomic<std::uint32_t> muted;
};

struct DeviceSlot {
    std::atomic<std::uint32_t> present;
    std::atomic<std::uint32_t> life;
    std::atomic<AudioFlow> flow;
    std::atomic<std::uint32_t> idMissing;
    std::atomic<FriendlyName> nameKind;
    Text id;
    Text name;
    LevelsSlot levels;
};

struct FailureSlot {
    std::atomic<std::uint32_t> active;
    std::atomic<HRESULT> result;
    std::atomic<std::uint32_t> skip;
    std::atomic<std::uint32_t> times;
};

// `sequence` is one more than the number of the entry in the slot; a reader that sees the same before and
// after copying has read one entry and not parts of two.
struct NoticeSlot {
    std::atomic<std::uint64_t> sequence;
    std::atomic<std::uint32_t> device;
    std::atomic<std::uint32_t> null;
    std::array<std::atomic<std::uint64_t>, 2> context;
    LevelsSlot levels;
};

static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "locks do not work between processes");
static_assert(std::atomic<std::uint32_t>::is_always_lock_free);
static_assert(std::atomic<float>::is_always_lock_free);
static_assert(sizeof(GUID) == sizeof(std::array<std::uint64_t, 2>));

std::size_t slotOf(AudioCall call) noexcept {
    return static_cast<std::size_t>(call);
}

std::size_t slotOf(AudioObject kind) noexcept {
    return static_cast<std::size_t>(kind);
}

void store(LevelsSlot& slot, const AudioLevels& levels) noexcept {
    const std::size_t count = std::min(levels.channels.size(), slot.channels.size());
    for (std::size_t i = 0; i < count; ++i) {
        slot.channels[i].store(levels.channels[i], std::memory_order_relaxed);
    }
    slot.channelCount.store(static_cast<std::uint32_t>(count), std::memory_order_relaxed);
    slot.master.store(levels.master, std::memory_order_relaxed);
    slot.muted.store(levels.muted ? 1 : 0, std::memory_order_relaxed);
}

AudioLevels load(const LevelsSlot& slot) {
    AudioLevels levels;
    const std::size_t count = std::min<std::size_t>(slot.channelCount.load(), slot.channels.size());
    for (std::size_t i = 0; i < count; ++i) {
        levels.channels.push_back(slot.channels[i].load(std::memory_order_relaxed));
    }
    levels.master = slot.master.load(std::memory_order_relaxed);
    levels.muted = slot.muted.load(std::memory_order_relaxed) != 0;
    return levels;
}

AudioDevice usualDevice(AudioFlow flow, const std::wstring& id, const std::wstring& name, float volume) {
    AudioDevice device;
    device.flow = flow;
    device.id = id;
    device.name = name;
    device.levels = {{volume, volume}, volume, false};
    return device;
}

}  // namespace

struct VirtualAudio::Record {
    std::atomic<std::uint64_t> identity;

    std::atomic<std::uint32_t> deviceCount;
    std::array<DeviceSlot, kMaxDevices> devices;
    // One more than the index; 0 is none.
    std::array<std::atomic<std::uint32_t>, kAudioFlowCount> defaults;
    // Less one, so that a new record has 1.
    std::atomic<std::int32_t> muteValueLessOne;
    std::atomic<std::uint32_t> answersCount;
    std::atomic<std::uint32_t> countAnswer;
    std::atomic<std::uint32_t> serviceStopped;
    std::atomic<std::uint32_t> serviceLife;
    std::atomic<std::uint32_t> enumeratorLife;
    std::atomic<std::uint32_t> volumeLife;
    std::atomic<HRESULT> brokenVolumeResult;
    std::array<FailureSlot, kAudioCallCount> failures;

    CallLog log;
    Text lastDefaultId;
    std::array<std::atomic<std::int32_t>, kAudioObjectCount> objects;
    std::array<std::atomic<std::int32_t>, kAudioObjectCount> references;

    std::array<std::atomic<std::uint64_t>, kCallbackEventCount> callbackEvents;
    std::atomic<std::int32_t> callbackReferences;
    std::atomic<std::uint32_t> keepsCallbacks;
    std::atomic<std::uint32_t> dropWanted;

    std::atomic<std::uint64_t> noticesPosted;
    std::atomic<std::uint64_t> noticesHandled;
    std::atomic<std::uint64_t> noticesDelivered;
    std::atomic<HRESULT> lastNoticeResult;
    std::atomic<std::uint32_t> lastNoticeThread;
    std::array<NoticeSlot, kNoticeQueueLength> notices;

    std::atomic<std::uint32_t> floodWanted;
    std::atomic<std::int32_t> floodRunning;
};

VirtualAudio::VirtualAudio()
    : shared_(openRecord()),
      wake_(CreateEventW(nullptr, FALSE, FALSE, (sectionName(L"CoreAudio") + L".wake").c_str())) {
    if (!wake_) {
        throw std::runtime_error("The stand-in's event cannot be opened");
    }
}

SharedRecord VirtualAudio::openRecord() {
    return SharedRecord(sectionName(L"CoreAudio"), kIdentity, sizeof(Record));
}

VirtualAudio::Record& VirtualAudio::record() const noexcept {
    return *static_cast<Record*>(shared_.data());
}

std::optional<std::uint32_t> VirtualAudio::addDevice(const AudioDevice& device) {
    Record& r = record();
    const std::uint32_t index = r.deviceCount.load(std::memory_order_relaxed);
    if (index == kMaxDevices) {
        return std::nullopt;
    }
    DeviceSlot& slot = r.devices[index];
    slot.flow.store(device.flow, std::memory_order_relaxed);
    slot.idMissing.store(device.idMissing ? 1 : 0, std::memory_order_relaxed);
    slot.nameKind.store(device.nameKind, std::memory_order_relaxed);
    slot.id.set(device.id);
    slot.name.set(device.name);
    store(slot.levels, device.levels);
    slot.present.store(1, std::memory_order_relaxed);
    r.deviceCount.store(index + 1, std::memory_order_release);
    return index;
}

void VirtualAudio::addUsualDevices() {
    const auto speakers = addDevice(usualDevice(
        AudioFlow::Render, L"{0.0.0.00000000}.{speakers}", L"Speakers (High Definition Audio Device)", 0.6F));
    addDevice(usualDevice(
        AudioFlow::Render, L"{0.0.0.00000000}.{headphones}", L"Headphones (USB Audio Device)", 0.4F));
    addDevice(
        usualDevice(AudioFlow::Render, L"{0.0.0.00000000}.{monitor}", L"Monitor (Display Audio)", 0.25F));
    const auto microphone = addDevice(usualDevice(
        AudioFlow::Capture, L"{0.0.1.00000000}.{microphone}", L"Microphone (USB Audio Device)", 0.8F));
    setDefault(AudioFlow::Render, speakers);
    setDefault(AudioFlow::Capture, microphone);
}

std::uint32_t VirtualAudio::deviceCount() const noexcept {
    return record().deviceCount.load(std::memory_order_acquire);
}

AudioDevice VirtualAudio::device(std::uint32_t index) const {
    const DeviceSlot& slot = record().devices.at(index);
    AudioDevice device;
    device.flow = slot.flow.load();
    device.id = slot.id.text();
    device.idMissing = slot.idMissing.load() != 0;
    device.name = slot.name.text();
    device.nameKind = slot.nameKind.load();
    device.levels = load(slot.levels);
    return device;
}

void VirtualAudio::setPresent(std::uint32_t index, bool present) noexcept {
    DeviceSlot& slot = record().devices[index];
    if (slot.present.exchange(present ? 1 : 0) != 0 && !present) {
        slot.life.fetch_add(1);
    }
}

bool VirtualAudio::isPresent(std::uint32_t index) const noexcept {
    return record().devices[index].present.load() != 0;
}

void VirtualAudio::setDefault(AudioFlow flow, std::optional<std::uint32_t> index) noexcept {
    record().defaults[static_cast<std::size_t>(flow)].store(index ? *index + 1 : 0);
}

std::optional<std::uint32_t> VirtualAudio::defaultDevice(AudioFlow flow) const noexcept {
    const std::uint32_t stored = record().defaults[static_cast<std::size_t>(flow)].load();
    return stored == 0 || !isPresent(stored - 1) ? std::nullopt : std::optional(stored - 1);
}

void VirtualAudio::setCountAnswer(std::optional<std::uint32_t> count) noexcept {
    record().countAnswer = count.value_or(0);
    record().answersCount = count ? 1 : 0;
}

std::optional<std::uint32_t> VirtualAudio::countAnswer() const noexcept {
    return record().answersCount != 0 ? std::optional(record().countAnswer.load()) : std::nullopt;
}

void VirtualAudio::setMuteValue(std::int32_t value) noexcept {
    record().muteValueLessOne.store(value - 1);
}

std::int32_t VirtualAudio::muteValue() const noexcept {
    return record().muteValueLessOne.load() + 1;
}

void VirtualAudio::setServiceRunning(bool running) noexcept {
    Record& r = record();
    if (r.serviceStopped.exchange(running ? 0 : 1) == 0 && !running) {
        r.serviceLife.fetch_add(1);
        for (DeviceSlot& slot : r.devices) {
            slot.life.fetch_add(1);
        }
    }
}

bool VirtualAudio::isServiceRunning() const noexcept {
    return record().serviceStopped.load() == 0;
}

std::uint32_t VirtualAudio::deviceLife(std::uint32_t index) const noexcept {
    return record().devices[index].life.load();
}

std::uint32_t VirtualAudio::serviceLife() const noexcept {
    return record().serviceLife.load();
}

void VirtualAudio::loseEnumerators() noexcept {
    ++record().enumeratorLife;
}

void VirtualAudio::breakVolumes(HRESULT result) noexcept {
    record().brokenVolumeResult = result;
    ++record().volumeLife;
}

std::uint32_t VirtualAudio::enumeratorLife() const noexcept {
    return record().enumeratorLife.load();
}

std::uint32_t VirtualAudio::volumeLife() const noexcept {
    return record().volumeLife.load();
}

HRESULT VirtualAudio::brokenVolumeResult() const noexcept {
    return record().brokenVolumeResult.load();
}

void VirtualAudio::storeLevels(std::uint32_t index, const AudioLevels& levels) noexcept {
    store(record().devices[index].levels, levels);
}

void VirtualAudio::setLevels(std::uint32_t index, const AudioLevels& levels) {
    AudioLevels changed = levels;
    changed.channels.resize(record().devices.at(index).levels.channelCount.load());
    storeLevels(index, changed);
    postNotice(index, {GUID{}, changed, false});
}

AudioLevels VirtualAudio::levels(std::uint32_t index) const {
    return load(record().devices.at(index).levels);
}

void VirtualAudio::failCall(AudioCall call, const AudioFailure& failure) noexcept {
    FailureSlot& slot = record().failures[slotOf(call)];
    slot.result.store(failure.result);
    slot.skip.store(failure.skip);
    slot.times.store(failure.times);
    slot.active.store(1);
}

void VirtualAudio::clearFailures() noexcept {
    for (FailureSlot& slot : record().failures) {
        slot.active.store(0);
    }
}

void VirtualAudio::setDuration(AudioCall call, std::uint32_t milliseconds) noexcept {
    record().log.setDuration(static_cast<std::uint32_t>(call), milliseconds);
}

void VirtualAudio::postNotice(std::uint32_t index, const AudioNotice& notice) noexcept {
    Record& r = record();
    const std::uint64_t number = r.noticesPosted.fetch_add(1);
    NoticeSlot& slot = r.notices[number % kNoticeQueueLength];
    slot.sequence.store(0, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release);
    const auto context = std::bit_cast<std::array<std::uint64_t, 2>>(notice.context);
    slot.device.store(index, std::memory_order_relaxed);
    slot.null.store(notice.null ? 1 : 0, std::memory_order_relaxed);
    slot.context[0].store(context[0], std::memory_order_relaxed);
    slot.context[1].store(context[1], std::memory_order_relaxed);
    store(slot.levels, notice.levels);
    slot.sequence.store(number + 1, std::memory_order_release);
    SetEvent(wake_.get());
}

bool VirtualAudio::settle(std::chrono::milliseconds limit) const {
    const Record& r = record();
    const std::uint64_t posted = r.noticesPosted.load();
    return waitUntil([&r, posted] { return r.noticesHandled.load() >= posted; }, limit);
}

bool VirtualAudio::setFlood(std::uint32_t threads) {
    Record& r = record();
    const std::uint32_t wanted = std::min(threads, kMaxFloodThreads);
    r.floodWanted.store(wanted);
    SetEvent(wake_.get());
    return waitUntil([&r, wanted] { return r.floodRunning.load() == static_cast<std::int32_t>(wanted); },
                     kHandshakeLimit);
}

void VirtualAudio::setKeepsCallbacks(bool keep) noexcept {
    record().keepsCallbacks.store(keep ? 1 : 0);
}

bool VirtualAudio::dropKeptCallbacks() {
    Record& r = record();
    r.dropWanted.store(1);
    SetEvent(wake_.get());
    return waitUntil([&r] { return r.dropWanted.load() == 0; }, kHandshakeLimit);
}

std::uint64_t VirtualAudio::callCount(AudioCall call) const noexcept {
    return record().log.count(static_cast<std::uint32_t>(call));
}

std::vector<AudioCallEntry> VirtualAudio::calls() const {
    std::vector<AudioCallEntry> entries;
    for (const LoggedCall& call : record().log.entries()) {
        const auto& [deviceIndex, first, second, scalar, withContext] = call.arguments;
        AudioCallEntry entry;
        entry.timeUs = call.timeUs;
        entry.threadId = call.threadId;
        entry.call = static_cast<AudioCall>(call.call);
        entry.device = static_cast<std::int32_t>(deviceIndex);
        entry.first = static_cast<std::uint32_t>(first);
        entry.second = static_cast<std::uint32_t>(second);
        entry.scalar = std::bit_cast<float>(static_cast<std::uint32_t>(scalar));
        entry.withContext = withContext != 0;
        entries.push_back(entry);
    }
    return entries;
}

std::wstring VirtualAudio::lastDefaultId() const {
    return record().lastDefaultId.text();
}

std::int32_t VirtualAudio::liveObjects(AudioObject kind) const noexcept {
    return record().objects[slotOf(kind)].load();
}

std::int32_t VirtualAudio::references(AudioObject kind) const noexcept {
    return record().references[slotOf(kind)].load();
}

std::int32_t VirtualAudio::liveObjects() const noexcept {
    std::int32_t sum = 0;
    for (const std::atomic<std::int32_t>& count : record().objects) {
        sum += count.load();
    }
    return sum;
}

std::uint64_t VirtualAudio::callbackEvents(CallbackEvent event) const noexcept {
    return record().callbackEvents[static_cast<std::size_t>(event)].load();
}

std::int32_t VirtualAudio::callbackReferences() const noexcept {
    return record().callbackReferences.load();
}

std::uint64_t VirtualAudio::noticesDelivered() const noexcept {
    return record().noticesDelivered.load();
}

HRESULT VirtualAudio::lastNoticeResult() const noexcept {
    return record().lastNoticeResult.load();
}

std::uint32_t VirtualAudio::lastNoticeThread() const noexcept {
    return record().lastNoticeThread.load();
}

std::optional<HRESULT> VirtualAudio::enter(const AudioCallEntry& call) noexcept {
    Record& r = record();
    r.log.add(static_cast<std::uint32_t>(call.call),
              {call.device,
               call.first,
               call.second,
               std::bit_cast<std::uint32_t>(call.scalar),
               call.withContext ? 1 : 0});

    FailureSlot& failure = r.failures[slotOf(call.call)];
    if (failure.active.load() == 0) {
        return std::nullopt;
    }
    if (const std::uint32_t skip = failure.skip.load(); skip > 0) {
        failure.skip.store(skip - 1);
        return std::nullopt;
    }
    const std::uint32_t times = failure.times.load();
    if (times == 1) {
        failure.active.store(0);
    } else if (times > 1) {
        failure.times.store(times - 1);
    }
    return failure.result.load();
}

void VirtualAudio::recordDefaultId(const wchar_t* id) noexcept {
    record().lastDefaultId.set(id == nullptr ? std::wstring_view() : std::wstring_view(id));
}

void VirtualAudio::countObject(AudioObject kind, std::int32_t change) noexcept {
    record().objects[slotOf(kind)].fetch_add(change);
}

void VirtualAudio::countReference(AudioObject kind, std::int32_t change) noexcept {
    record().references[slotOf(kind)].fetch_add(change);
}

void VirtualAudio::countCallbackReference(std::int32_t change) noexcept {
    record().callbackReferences.fetch_add(change);
}

void VirtualAudio::countCallbackEvent(CallbackEvent event) noexcept {
    record().callbackEvents[static_cast<std::size_t>(event)].fetch_add(1);
}

void VirtualAudio::countNotice(HRESULT result) noexcept {
    Record& r = record();
    r.lastNoticeResult.store(result);
    r.lastNoticeThread.store(GetCurrentThreadId());
    r.noticesDelivered.fetch_add(1);
}

std::optional<std::uint32_t> VirtualAudio::findDevice(const wchar_t* id) const {
    for (std::uint32_t index = 0; id != nullptr && index < deviceCount(); ++index) {
        if (isPresent(index) && record().devices[index].id.text() == id) {
            return index;
        }
    }
    return std::nullopt;
}

void VirtualAudio::setChannel(std::uint32_t index, std::uint32_t channel, float scalar, const GUID* context) {
    AudioLevels changed = levels(index);
    changed.channels.at(channel) = scalar;
    changed.master = *std::max_element(changed.channels.begin(), changed.channels.end());
    storeLevels(index, changed);
    postNotice(index, {context == nullptr ? GUID{} : *context, changed, false});
}

void VirtualAudio::setMuted(std::uint32_t index, bool muted, const GUID* context) {
    AudioLevels changed = levels(index);
    changed.muted = muted;
    storeLevels(index, changed);
    postNotice(index, {context == nullptr ? GUID{} : *context, changed, false});
}

std::uint64_t VirtualAudio::noticesPosted() const noexcept {
    return record().noticesPosted.load();
}

std::optional<VirtualAudio::PostedNotice> VirtualAudio::notice(std::uint64_t number) const {
    const NoticeSlot& slot = record().notices[number % kNoticeQueueLength];
    if (slot.sequence.load(std::memory_order_acquire) != number + 1) {
        return std::nullopt;
    }
    PostedNotice posted;
    posted.device = slot.device.load(std::memory_order_relaxed);
    posted.notice.null = slot.null.load(std::memory_order_relaxed) != 0;
    posted.notice.context =
        std::bit_cast<GUID>(std::array<std::uint64_t, 2>{slot.context[0].load(), slot.context[1].load()});
    posted.notice.levels = load(slot.levels);
    std::atomic_thread_fence(std::memory_order_acquire);
    if (slot.sequence.load(std::memory_order_relaxed) != number + 1) {
        return std::nullopt;
    }
    return posted;
}

void VirtualAudio::setNoticesHandled(std::uint64_t number) noexcept {
    record().noticesHandled.store(number);
}

void VirtualAudio::waitForWork(std::chrono::milliseconds limit) const noexcept {
    WaitForSingleObject(wake_.get(), static_cast<DWORD>(limit.count()));
}

std::uint32_t VirtualAudio::floodThreadsWanted() const noexcept {
    return record().floodWanted.load();
}

void VirtualAudio::countFloodThread(std::int32_t change) noexcept {
    record().floodRunning.fetch_add(change);
}

bool VirtualAudio::keepsCallbacks() const noexcept {
    return record().keepsCallbacks.load() != 0;
}

bool VirtualAudio::dropWanted() const noexcept {
    return record().dropWanted.load() != 0;
}

void VirtualAudio::endDrop() noexcept {
    record().dropWanted.store(0);
}

}  // namespace Standins
