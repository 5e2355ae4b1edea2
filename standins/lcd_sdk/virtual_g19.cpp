#include "standins/lcd_sdk/virtual_g19.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <cstring>
#include <string_view>

#include "standins/call_log.h"
#include "standins/shared_text.h"

namespace Standins {

namespace {

constexpr std::size_t kInitNameLength = 127;
// One more than can be read back: the program may be writing the next frame at any time.
constexpr std::size_t kFrameSlots = VirtualG19::kFrameLogLength + 1;
constexpr std::size_t kFrameWords = Panelix::LcdSdk::kColorFrameBytes / sizeof(std::uint64_t);
static_assert(Panelix::LcdSdk::kColorFrameBytes % sizeof(std::uint64_t) == 0);

// "KG19" and the version of the layout below: raise it with every change.
constexpr std::uint64_t kIdentity = 0x4B47'3139'0000'0003;

constexpr std::uint64_t kFnvStart = 0xCBF2'9CE4'8422'2325;
constexpr std::uint64_t kFnvPrime = 0x0000'0100'0000'01B3;

struct ScriptStep {
    std::atomic<std::uint32_t> buttons;
    std::atomic<std::uint32_t> passes;
};

// `sequence` is 0 while the slot is being written, else the number of the frame in it: a reader that sees the
// same number before and after copying has a whole frame.
struct FrameSlot {
    std::atomic<std::uint64_t> sequence;
    std::atomic<std::uint64_t> pass;
    std::atomic<std::uint64_t> timeUs;
    std::atomic<std::uint64_t> checksum;
    std::atomic<std::uint32_t> buttons;
    std::uint64_t words[kFrameWords];
};

}  // namespace

struct VirtualG19::Record {
    std::atomic<std::uint64_t> identity;

    std::atomic<KeyboardState> state;
    std::atomic<std::uint32_t> processId;
    std::atomic<std::int32_t> initType;
    SharedText<wchar_t, kInitNameLength> initName;

    std::atomic<std::uint32_t> refuseInit;
    std::atomic<std::uint32_t> disconnected;

    std::atomic<std::uint32_t> heldButtons;
    std::atomic<std::uint32_t> scriptedButtons;
    std::atomic<std::uint32_t> passesLeft;  // of the step that is running
    std::atomic<std::uint32_t> stepsQueued;
    std::atomic<std::uint32_t> stepsDone;
    std::array<ScriptStep, kScriptLength> script;

    CallLog log;

    std::atomic<std::uint64_t> framesShown;
    std::array<FrameSlot, kFrameSlots> frames;
};

std::uint64_t frameChecksum(const std::uint8_t* bytes, std::size_t size) noexcept {
    std::uint64_t sum = kFnvStart;
    for (std::size_t offset = 0; offset < size; offset += sizeof(std::uint64_t)) {
        std::uint64_t word;
        std::memcpy(&word, bytes + offset, sizeof(word));
        sum = (sum ^ word) * kFnvPrime;
    }
    return sum;
}

VirtualG19::VirtualG19() : shared_(openRecord()) {}

SharedRecord VirtualG19::openRecord() {
    return SharedRecord(sectionName(L"VirtualG19"), kIdentity, sizeof(Record));
}

VirtualG19::Record& VirtualG19::record() const noexcept {
    return *static_cast<Record*>(shared_.data());
}

void VirtualG19::recordCall(LcdCall call, std::uint32_t argument) noexcept {
    record().log.add(static_cast<std::uint32_t>(call), {argument});
}

void VirtualG19::recordInit(const wchar_t* name, int type, bool accepted) noexcept {
    Record& r = record();
    r.initName.set(name == nullptr ? std::wstring_view() : std::wstring_view(name));
    r.initType.store(type, std::memory_order_relaxed);
    r.processId.store(GetCurrentProcessId(), std::memory_order_relaxed);
    if (accepted) {
        startNextStep();
        r.state.store(KeyboardState::Running, std::memory_order_release);
    }
}

void VirtualG19::setBackground(const std::uint8_t* pixels) noexcept {
    Record& r = record();
    const std::uint64_t sequence = r.framesShown.load(std::memory_order_relaxed) + 1;
    FrameSlot& slot = r.frames[sequence % kFrameSlots];
    slot.sequence.store(0, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release);
    for (std::size_t i = 0; i < kFrameWords; ++i) {
        std::uint64_t word;
        std::memcpy(&word, pixels + i * sizeof(word), sizeof(word));
        std::atomic_ref<std::uint64_t>(slot.words[i]).store(word, std::memory_order_relaxed);
    }
    slot.checksum.store(frameChecksum(pixels, Panelix::LcdSdk::kColorFrameBytes), std::memory_order_relaxed);
    framePending_ = true;
}

void VirtualG19::endPass() noexcept {
    Record& r = record();
    if (framePending_) {
        framePending_ = false;
        const std::uint64_t sequence = r.framesShown.load(std::memory_order_relaxed) + 1;
        FrameSlot& slot = r.frames[sequence % kFrameSlots];
        slot.pass.store(passCount(), std::memory_order_relaxed);
        slot.timeUs.store(nowMicroseconds(), std::memory_order_relaxed);
        slot.buttons.store(buttonsDown(), std::memory_order_relaxed);
        slot.sequence.store(sequence, std::memory_order_release);
        r.framesShown.store(sequence, std::memory_order_release);
    }
    const std::uint32_t left = r.passesLeft.load(std::memory_order_relaxed);
    if (left > 0) {
        r.passesLeft.store(left - 1, std::memory_order_relaxed);
        if (left == 1) {
            r.scriptedButtons.store(0, std::memory_order_relaxed);
            r.stepsDone.fetch_add(1, std::memory_order_release);
        }
    }
    startNextStep();
}

void VirtualG19::startNextStep() noexcept {
    Record& r = record();
    const std::uint32_t done = r.stepsDone.load(std::memory_order_relaxed);
    if (r.passesLeft.load(std::memory_order_relaxed) > 0 ||
        done == r.stepsQueued.load(std::memory_order_acquire)) {
        return;
    }
    const ScriptStep& step = r.script[done % kScriptLength];
    r.scriptedButtons.store(step.buttons.load(std::memory_order_relaxed), std::memory_order_relaxed);
    r.passesLeft.store(step.passes.load(std::memory_order_relaxed), std::memory_order_relaxed);
}

void VirtualG19::recordShutdown() noexcept {
    record().state.store(KeyboardState::Ended, std::memory_order_release);
}

KeyboardState VirtualG19::state() const noexcept {
    return record().state.load(std::memory_order_acquire);
}

bool VirtualG19::programIsRunning() const noexcept {
    if (state() != KeyboardState::Running) {
        return false;
    }
    const Panelix::UniqueHandle process(OpenProcess(SYNCHRONIZE, FALSE, processId()));
    if (!process) {
        // There is no such process any more; any other refusal means that there is one.
        return GetLastError() != ERROR_INVALID_PARAMETER;
    }
    return WaitForSingleObject(process.get(), 0) == WAIT_TIMEOUT;
}

std::uint32_t VirtualG19::processId() const noexcept {
    return record().processId.load(std::memory_order_acquire);
}

LcdInitRecord VirtualG19::initRecord() const {
    const Record& r = record();
    LcdInitRecord init;
    init.type = r.initType.load(std::memory_order_acquire);
    init.name = r.initName.text();
    return init;
}

std::uint64_t VirtualG19::callCount(LcdCall call) const noexcept {
    return record().log.count(static_cast<std::uint32_t>(call));
}

std::vector<LcdCallEntry> VirtualG19::calls() const {
    std::vector<LcdCallEntry> entries;
    for (const LoggedCall& call : record().log.entries()) {
        entries.push_back({call.timeUs,
                           static_cast<LcdCall>(call.call),
                           static_cast<std::uint32_t>(call.arguments.front())});
    }
    return entries;
}

std::uint64_t VirtualG19::frameCount() const noexcept {
    return record().framesShown.load(std::memory_order_acquire);
}

std::optional<G19Frame> VirtualG19::frame(std::uint64_t sequence) const {
    Record& r = record();
    FrameSlot& slot = r.frames[sequence % kFrameSlots];
    if (sequence == 0 || slot.sequence.load(std::memory_order_acquire) != sequence) {
        return std::nullopt;
    }
    G19Frame frame;
    frame.sequence = sequence;
    frame.pass = slot.pass.load(std::memory_order_relaxed);
    frame.timeUs = slot.timeUs.load(std::memory_order_relaxed);
    frame.checksum = slot.checksum.load(std::memory_order_relaxed);
    frame.buttons = slot.buttons.load(std::memory_order_relaxed);
    frame.pixels.resize(Panelix::LcdSdk::kColorFrameBytes);
    for (std::size_t i = 0; i < kFrameWords; ++i) {
        const auto word = std::atomic_ref<std::uint64_t>(slot.words[i]).load(std::memory_order_relaxed);
        std::memcpy(frame.pixels.data() + i * sizeof(word), &word, sizeof(word));
    }
    std::atomic_thread_fence(std::memory_order_acquire);
    if (slot.sequence.load(std::memory_order_relaxed) != sequence) {
        return std::nullopt;
    }
    return frame;
}

std::optional<G19Frame> VirtualG19::lastFrame() const {
    return frame(frameCount());
}

void VirtualG19::setHeldButtons(std::uint32_t mask) noexcept {
    record().heldButtons.store(mask, std::memory_order_release);
}

std::uint32_t VirtualG19::heldButtons() const noexcept {
    return record().heldButtons.load(std::memory_order_acquire);
}

std::uint32_t VirtualG19::buttonsDown() const noexcept {
    return heldButtons() | record().scriptedButtons.load(std::memory_order_relaxed);
}

bool VirtualG19::addScriptStep(std::uint32_t mask, std::uint32_t passes) noexcept {
    Record& r = record();
    const std::uint32_t queued = r.stepsQueued.load(std::memory_order_relaxed);
    if (passes == 0 || queued - r.stepsDone.load(std::memory_order_acquire) >= kScriptLength) {
        return false;
    }
    ScriptStep& step = r.script[queued % kScriptLength];
    step.buttons.store(mask, std::memory_order_relaxed);
    step.passes.store(passes, std::memory_order_relaxed);
    r.stepsQueued.store(queued + 1, std::memory_order_release);
    return true;
}

bool VirtualG19::scriptDone() const noexcept {
    const Record& r = record();
    return r.stepsDone.load(std::memory_order_acquire) == r.stepsQueued.load(std::memory_order_acquire);
}

void VirtualG19::setDuration(LcdCall call, std::uint32_t milliseconds) noexcept {
    record().log.setDuration(static_cast<std::uint32_t>(call), milliseconds);
}

void VirtualG19::setRefuseInit(bool refuse) noexcept {
    record().refuseInit.store(refuse ? 1 : 0, std::memory_order_release);
}

bool VirtualG19::refusesInit() const noexcept {
    return record().refuseInit.load(std::memory_order_acquire) != 0;
}

void VirtualG19::setConnected(bool connected) noexcept {
    record().disconnected.store(connected ? 0 : 1, std::memory_order_release);
}

bool VirtualG19::isConnected() const noexcept {
    return record().disconnected.load(std::memory_order_acquire) == 0;
}

}  // namespace Standins
