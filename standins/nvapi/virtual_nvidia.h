#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "standins/call_log.h"
#include "standins/shared_record.h"

namespace Standins {

/// NVAPI's functions, as the log names them. Arguments in the log: the card's handle, the structure's version
/// word, and what else the call asks for.
enum class NvapiCall : std::uint32_t {
    Initialize,
    Unload,
    GetErrorMessage,             ///< First argument: the status.
    EnumPhysicalGpus,            ///< None.
    GpuGetFullName,              ///< Handle.
    GpuGetDynamicPstatesInfoEx,  ///< Handle, version.
    GpuGetThermalSettings,       ///< Handle, version, sensor index.
    GpuGetMemoryInfo,            ///< Handle, version.
    GpuGetAllClockFrequencies,   ///< Handle, version, the word with the clock type.
};

inline constexpr std::size_t kNvapiCallCount = 9;

/// What one card answers.
struct NvidiaFigures {
    std::uint32_t loadPercent = 0;
    std::int32_t temperature = 0;  ///< Degrees Celsius.
    std::uint32_t memoryKB = 0;
    std::uint32_t freeMemoryKB = 0;
    std::uint32_t coreClockKHz = 0;
};

/// The virtual NVIDIA driver: one shared record, in which the stand-in nvapi64.dll writes the calls that it
/// receives, and from which it takes its answers. A new record has no card, and every call succeeds.
///
/// The library gives no function but Initialize before that was called; after one that failed, no more than
/// Unload and GetErrorMessage.
class VirtualNvidia {
public:
    static constexpr std::size_t kMaxGpus = 64;
    static constexpr std::size_t kTextLength = 64;

    /// Opens the record, or makes it. Throws std::runtime_error when that fails.
    VirtualNvidia();

    /// Cards that the enumeration gives, at most kMaxGpus. Their handles are gpuHandle(0) and so on.
    void setGpuCount(std::size_t count) noexcept;
    std::int64_t gpuHandle(std::size_t gpu) const noexcept;
    /// As after a change of the displays or cards: no handle of before is good any more, and the cards get
    /// others with the next enumeration.
    void invalidateHandles() noexcept;
    /// As after an update of the driver, or after a wake that went wrong: every call of a program that has
    /// called Initialize before returns `status`, until the program has called Unload as often as Initialize
    /// and then Initialize again. The functions that it was given before go on so for ever, and the cards get
    /// other handles; the former ones are no card's.
    void replaceDriver(std::int32_t status) noexcept;
    /// At most kTextLength bytes; a name that takes all of them has no terminator.
    void setName(std::size_t gpu, std::string_view name) noexcept;
    void setFigures(std::size_t gpu, const NvidiaFigures& figures) noexcept;
    /// The driver does not know the function's id. Read when a program asks for the function.
    void setMissing(NvapiCall call, bool missing) noexcept;
    /// What the call returns; it hands nothing out unless that is 0.
    void setStatus(NvapiCall call, std::int32_t status) noexcept;
    /// Calls that fail hand out what they would if they had succeeded.
    void setWritesBeforeItFails(bool writes) noexcept;
    /// What GetErrorMessage gives for every status. Length as for names.
    void setErrorText(std::string_view text) noexcept;

    CallLog& log() noexcept;
    std::uint64_t callCount(NvapiCall call) noexcept;

    // The library's side.

    bool isMissing(NvapiCall call) const noexcept;
    std::int32_t status(NvapiCall call) const noexcept;
    bool writesBeforeItFails() const noexcept;
    /// Gives the cards the handles that gpuHandle() tells from now on.
    void enumerate() noexcept;
    /// The card that the handle belongs to; nothing for one that is no card's.
    std::optional<std::size_t> gpuOf(std::int64_t handle) const noexcept;
    /// It was a card's until its handles were invalidated.
    bool isStale(std::int64_t handle) const noexcept;
    std::size_t gpuCount() const noexcept;
    NvidiaFigures figures(std::size_t gpu) const noexcept;
    /// Grows whenever the driver is replaced.
    std::uint32_t driverLife() const noexcept;
    /// What functions of a former life return.
    std::int32_t formerLifeStatus() const noexcept;
    /// Copies kTextLength bytes.
    void copyName(std::size_t gpu, char* name) const noexcept;
    void copyErrorText(char* text) const noexcept;

private:
    struct Record;

    static SharedRecord openRecord();
    Record& record() const noexcept;

    SharedRecord shared_;
};

}  // namespace Standins
