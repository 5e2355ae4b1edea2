// What the shipped program shows from outside, on a machine with the stand-ins of all vendor libraries: time
// from the start to the first frame, the pace of its passes, the memory that it has for itself, and the
// processor time of a pass, graphs full.

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "framework/core/lcd_sdk_abi.h"
#include "framework/core/unique_resource.h"
#include "standins/lcd_sdk/virtual_g19.h"
#include "standins/shared_record.h"
#include "standins/simulator/simulated_machine.h"
#include "standins/vendor_libraries.h"
#include "standins/wait_until.h"
#include "tests/benchmark/figures.h"
#include "tests/support/child_process.h"
#include "tests/support/equipped_machine.h"
#include "tests/support/lcd_registration.h"

namespace {

using namespace std::chrono_literals;
using Standins::LcdCall;
namespace LcdSdk = Panelix::LcdSdk;

constexpr wchar_t kProgram[] = L"" KELVARO_PROGRAM;
constexpr unsigned kIntervals = 300;
constexpr int kPresses = 30;
/// Passes of a slide that the next one follows at the slide's pace.
constexpr std::size_t kSlideIntervals = std::size_t{10} * kPresses;
constexpr std::uint32_t kPassesPerPress = 14;
/// Half way between the two periods, of 66 and 16 ms.
constexpr double kLongestSlideIntervalMs = 41.0;

/// 201 readings, one every 300 ms, and the visits to another page before.
constexpr auto kFullGraph = 120s;

struct Options {
    int starts = 15;
    int minutes = 10;
};

class ProgramBenchmark {
public:
    explicit ProgramBenchmark(const Options& options) : options_(options) {}

    void run() {
        printPart("The shipped program");
        measureStarts();
        const ChildProcess kelvaro(machine_.program());
        const auto start = std::chrono::steady_clock::now();
        waitForPasses(kIntervals + 30);
        printPace("pace at rest", intervals(kIntervals), 66.0);
        measureSlides();
        const std::size_t early = privateBytes(kelvaro.id());
        const auto simulateUntil = [&](std::chrono::steady_clock::time_point end) {
            while (std::chrono::steady_clock::now() < end) {
                figures_.setTime(
                    std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
                std::this_thread::sleep_for(100ms);
            }
        };
        simulateUntil(start + std::chrono::minutes(options_.minutes));
        printMemory("private memory after a minute or less", early);
        printMemory("private memory after " + std::to_string(options_.minutes) + " min",
                    privateBytes(kelvaro.id()));
        // The main page was shown for a minute by now, and a graph has no room for more.
        simulateUntil(std::max(std::chrono::steady_clock::now(), start + kFullGraph));
        measureProcessorTime([&] { simulateUntil(std::chrono::steady_clock::now() + 20s); });
    }

private:
    /// Of the program's main thread, by pass. The stand-ins' own threads in the program do not count.
    void measureProcessorTime(const std::function<void()>& run) {
        const std::optional<double> before = mainThreadMs();
        const std::uint64_t passesBefore = keyboard_.passCount();
        run();
        const std::optional<double> after = mainThreadMs();
        const auto passes = static_cast<double>(keyboard_.passCount() - passesBefore);
        printLine("processor time of a pass, graphs full, figures moving",
                  before && after ? numberText((*after - *before) / passes, 2, " ms") : "-",
                  before && after ? "mean of " + numberText(passes, 0) + " passes" : "only Linux tells");
    }

    /// From the system below Wine, which knows of threads what Wine does not tell about another process.
    std::optional<double> mainThreadMs() const {
        std::error_code error;
        for (const auto& process : std::filesystem::directory_iterator(L"Z:\\proc", error)) {
            const std::wstring id = process.path().filename().wstring();
            if (id.find_first_not_of(L"0123456789") != std::wstring::npos) {
                continue;
            }
            std::ifstream commandLine(process.path() / L"cmdline", std::ios::binary);
            std::string command;
            std::getline(commandLine, command, '\0');
            // The path of the copy is this run's own.
            if (command.starts_with(std::filesystem::path(machine_.program()).string())) {
                std::ifstream times(process.path() / L"task" / id / L"schedstat");
                double nanoseconds = 0.0;
                return times >> nanoseconds ? std::optional(nanoseconds / 1e6) : std::nullopt;
            }
        }
        return std::nullopt;
    }

    void measureStarts() {
        std::vector<double> times;
        for (int i = 0; i < options_.starts; ++i) {
            const std::uint64_t before = keyboard_.frameCount();
            const std::uint64_t startUs = Standins::nowMicroseconds();
            const ChildProcess kelvaro(machine_.program());
            Standins::waitUntil([&] { return keyboard_.frameCount() > before; }, 30s);
            if (const std::optional<Standins::G19Frame> first = keyboard_.frame(before + 1)) {
                times.push_back(static_cast<double>(first->timeUs - startUs) / 1000.0);
            }
        }
        printLine("start to first frame, median of " + std::to_string(times.size()),
                  times.empty() ? "-" : numberText(median(times), 1, " ms"));
    }

    void waitForPasses(std::uint64_t count) {
        const std::uint64_t wanted = keyboard_.passCount() + count;
        Standins::waitUntil([&] { return keyboard_.passCount() >= wanted; }, 5min);
    }

    void measureSlides() {
        for (int i = 0; i < kPresses; ++i) {
            keyboard_.addScriptStep(LcdSdk::kButtonMenu, 2);
            keyboard_.addScriptStep(0, kPassesPerPress - 2);
        }
        Standins::waitUntil([&] { return keyboard_.scriptDone(); }, 5min);
        std::vector<double> slides = intervals(kPresses * kPassesPerPress);
        std::erase_if(slides, [](double interval) { return interval > kLongestSlideIntervalMs; });
        printPace("pace in a slide", slides, 16.0);
        if (slides.size() < kSlideIntervals * 9 / 10) {
            printLine("passes in a slide that took their time",
                      std::to_string(kSlideIntervals - slides.size()));
        }
    }

    /// Milliseconds between the starts of the newest passes. A pass starts with the first button polled.
    std::vector<double> intervals(std::size_t count) const {
        std::vector<double> starts;
        bool passEnded = false;
        for (const Standins::LcdCallEntry& call : keyboard_.calls()) {
            if (call.call == LcdCall::Update) {
                passEnded = true;
            } else if (passEnded) {
                passEnded = false;
                starts.push_back(static_cast<double>(call.timeUs) / 1000.0);
            }
        }
        std::vector<double> found;
        for (std::size_t i = 1; i < starts.size(); ++i) {
            found.push_back(starts[i] - starts[i - 1]);
        }
        if (found.size() > count) {
            found.erase(found.begin(), found.end() - static_cast<std::ptrdiff_t>(count));
        }
        return found;
    }

    static void printPace(const std::string& what, const std::vector<double>& intervals, double period) {
        if (intervals.empty()) {
            printLine(what, "-", "nothing was measured");
            return;
        }
        printLine(what + ", median of " + std::to_string(intervals.size()),
                  numberText(median(intervals), 2, " ms"),
                  numberText(period, 0) + " within 1" +
                      (std::abs(median(intervals) - period) > 1 ? "  EXCEEDS" : ""));
        const double slowest = quantile(intervals, 0.99);
        printLine(
            what + ", 99th percentile", numberText(slowest, 2, " ms"), limitText(slowest, period + 2, 0));
    }

    /// Wine knows what Windows calls PrivateUsage under this name only.
    static std::size_t privateBytes(DWORD process) {
        const Panelix::UniqueHandle handle(
            OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, process));
        PROCESS_MEMORY_COUNTERS counters{};
        GetProcessMemoryInfo(handle.get(), &counters, sizeof(counters));
        return counters.PagefileUsage;
    }

    static void printMemory(const std::string& what, std::size_t bytes) {
        printLine(what, numberText(static_cast<double>(bytes) / 1024 / 1024, 2, " MiB"));
    }

    Options options_;
    EquippedMachine machine_{kProgram};
    LcdRegistrationScope registration_{Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk)};
    Standins::VirtualG19 keyboard_;
    Standins::SimulatedMachine figures_;
};

int numberAfter(char** argument) {
    return argument[1] != nullptr ? std::atoi(argument[1]) : 0;
}

}  // namespace

int main(int, char** argv) {
    Options options;
    for (char** argument = argv + 1; *argument != nullptr; ++argument) {
        if (std::strcmp(*argument, "--starts") == 0) {
            options.starts = numberAfter(argument);
        } else if (std::strcmp(*argument, "--minutes") == 0) {
            options.minutes = numberAfter(argument);
        }
    }
    Standins::useOwnSession();
    ProgramBenchmark(options).run();
    return 0;
}
