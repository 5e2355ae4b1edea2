#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "framework/core/lcd_sdk_abi.h"
#include "standins/shared_record.h"

namespace Standins {

/// The LCD library's exports, in the order in which the record counts their calls.
enum class LcdCall : std::uint32_t {
    Init,
    IsConnected,
    IsButtonPressed,
    Update,
    Shutdown,
    MonoSetBackground,
    MonoSetText,
    ColorSetBackground,
    ColorSetTitle,
    ColorSetText,
};

inline constexpr std::size_t kLcdCallCount = 10;

/// One call in the order in which the calls came.
struct LcdCallEntry {
    std::uint64_t timeUs;  ///< nowMicroseconds() at the call.
    LcdCall call;
    std::uint32_t argument;  ///< The LCD type or the button mask, 0 for the other calls.
};

enum class KeyboardState : std::uint32_t {
    Waiting,  ///< No program has started the library yet.
    Running,  ///< LogiLcdInit returned true and LogiLcdShutdown has not been called since.
    Ended,    ///< LogiLcdShutdown was called.
};

/// One frame as the LCD showed it.
struct G19Frame {
    std::uint64_t sequence = 0;        ///< 1 for the first frame since the record exists.
    std::uint64_t pass = 0;            ///< Number of the LogiLcdUpdate call that showed it, counted from 1.
    std::uint64_t timeUs = 0;          ///< nowMicroseconds() at that call.
    std::uint64_t checksum = 0;        ///< frameChecksum() of the pixels.
    std::uint32_t buttons = 0;         ///< Masks of the buttons that were down during the pass.
    std::vector<std::uint8_t> pixels;  ///< Panelix::LcdSdk::kColorFrameBytes bytes: blue, green, red, alpha.
};

/// What LogiLcdInit was given at its latest call.
struct LcdInitRecord {
    std::wstring name;  ///< Cut to 127 characters.
    int type = 0;
};

/// 64-bit FNV-1a over the bytes, taken in words of eight. `size` must be a multiple of eight.
std::uint64_t frameChecksum(const std::uint8_t* bytes, std::size_t size) noexcept;

/// The virtual keyboard: one shared record, in which the stand-in library writes what the program does, and
/// from which it takes what the program is to be told. The viewer and the tests are on the other side. Any
/// number of processes may have it open; the library is the only one that uses the operations of the first
/// group, and only from one thread at a time.
///
/// A pass ends with LogiLcdUpdate. Scripted buttons change only there, so that every poll of one pass sees
/// the same buttons, however often the program polls.
class VirtualG19 {
public:
    /// The newest frames that can be read back whole.
    static constexpr std::size_t kFrameLogLength = 64;
    /// Script steps that may wait at one time.
    static constexpr std::size_t kScriptLength = 256;

    /// Opens the record, or makes it. Throws std::runtime_error when that fails.
    VirtualG19();

    // The library's side.

    void recordCall(LcdCall call, std::uint32_t argument) noexcept;
    /// Keeps what LogiLcdInit was given (null reads as empty), and whether it returned true. The script
    /// starts.
    void recordInit(const wchar_t* name, int type, bool accepted) noexcept;
    /// Keeps the frame until endPass() shows it; a second one in the same pass replaces the first.
    void setBackground(const std::uint8_t* pixels) noexcept;
    /// Shows the frame that was set since the last pass, if any, and moves the script on by one pass.
    void endPass() noexcept;
    void recordShutdown() noexcept;

    // What happened.

    KeyboardState state() const noexcept;
    /// True while the state is Running and the process that is using the library exists: a program that was
    /// ended by force does not call LogiLcdShutdown.
    bool programIsRunning() const noexcept;
    /// Id of the process that called LogiLcdInit last, 0 before the first call.
    std::uint32_t processId() const noexcept;
    LcdInitRecord initRecord() const;
    std::uint64_t callCount(LcdCall call) const noexcept;
    /// Calls of LogiLcdUpdate: the number of passes that the program has finished.
    std::uint64_t passCount() const noexcept { return callCount(LcdCall::Update); }
    /// The newest calls, oldest first.
    std::vector<LcdCallEntry> calls() const;
    /// Number of frames shown so far, which is also the newest one's sequence number.
    std::uint64_t frameCount() const noexcept;
    /// The frame of that number, or nothing when it is not shown yet or has been overwritten. What is
    /// returned is one frame and never parts of two.
    std::optional<G19Frame> frame(std::uint64_t sequence) const;
    /// The newest frame, or nothing before the first.
    std::optional<G19Frame> lastFrame() const;

    // The keyboard's side.

    /// Holds exactly these buttons from now on, in addition to the scripted ones.
    void setHeldButtons(std::uint32_t mask) noexcept;
    std::uint32_t heldButtons() const noexcept;
    /// The buttons that the library reports at this moment: held and scripted ones.
    std::uint32_t buttonsDown() const noexcept;

    /// Queues a script step: hold exactly these buttons for `passes` passes, then go on with the next step,
    /// or release all. Mask 0 is a pause. The first step begins with the first pass that starts after the
    /// call. False, and nothing queued, when `passes` is 0 or the queue is full. Only one process may write a
    /// script.
    bool addScriptStep(std::uint32_t mask, std::uint32_t passes) noexcept;
    /// True when every queued step has had all of its passes.
    bool scriptDone() const noexcept;

    /// Calls of that kind take so long from now on.
    void setDuration(LcdCall call, std::uint32_t milliseconds) noexcept;
    /// Makes LogiLcdInit return false. Off at first.
    void setRefuseInit(bool refuse) noexcept;
    bool refusesInit() const noexcept;
    /// What LogiLcdIsConnected returns. True at first.
    void setConnected(bool connected) noexcept;
    bool isConnected() const noexcept;

private:
    struct Record;

    static SharedRecord openRecord();
    Record& record() const noexcept;
    void startNextStep() noexcept;

    SharedRecord shared_;
    bool framePending_ = false;
};

}  // namespace Standins
