// Time of a whole frame of the main page (drawing, composing, conversion to an LCD frame), with the same
// figures as before and with others each time, of one in which nothing has changed, and of its steps, each
// beside the same calls issued bare, in turns in one run; and the blocks that each frame takes from the C++
// heap.

#include <windows.h>

#include <gdiplus.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "framework/core/app.h"
#include "framework/drawing/canvas.h"
#include "pages/main_page.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/shared_record.h"
#include "stats/system_info.h"
#include "tests/benchmark/bare_pass.h"
#include "tests/benchmark/figures.h"
#include "tests/pages/failing_allocations.h"
#include "tests/pages/sample_snapshot.h"

namespace {

constexpr int kPasses = 400;

class BenchmarkApp : public Panelix::App {
public:
    BenchmarkApp() : App(GetModuleHandleW(nullptr), L"Benchmark", IDI_APPLICATION, 66) {}
    void HandleCommand(std::uint32_t) override {}
};

class Benchmark {
public:
    Benchmark() {
        auto page = std::make_unique<MainPage>(&app_, &sampler_, nullptr);
        page_ = page.get();
        app_.SetMainPage(std::move(page));
        setOrdinaryFigures(sampler_);
        sampler_.unreadMail = 3;
        sampler_.gamepadBattery = 5;
        for (int i = 0; i < kHistoryLength; ++i) {
            paint();
        }
        bare_ = std::make_unique<BarePass>(Images(canvas_));
        Gdiplus::Graphics(&previous_).Clear(Gdiplus::Color(0xFF304050));
    }

    /// False when the two do not draw the same.
    bool run() {
        for (int i = 0; i < kPasses; ++i) {
            comparePainted(painted_, equalFrames_);
            paintedBlocks_.push_back(static_cast<double>(blocks_));
            compareUnchanged();
            compareSteps();
        }
        for (int i = 0; i < kPasses; ++i) {
            changeFigures();
            comparePainted(changing_, equalChangingFrames_);
        }
        printPart("Drawing: the program's way against the same calls issued bare");
        painted_.print("painted frame of the main page, figures as before", 1.05);
        changing_.print("painted frame, figures that change", 1.05);
        const double share = unchanged_.programTime() / painted_.bareTime();
        printLine("unchanged frame, of the bare calls of a painted one",
                  numberText(share, 4),
                  limitText(share, 1.05, 2));
        unchanged_.print("the same, of asking for the time and copying alone");
        atRest_.print("composePages at rest", 1.03);
        inASlide_.print("composePages in a slide", 1.03);
        conversion_.print("toLcdFrame", 1.03);
        printPart("Blocks that the program takes from the C++ heap");
        printLine("painted frame", numberText(median(paintedBlocks_), 0));
        const double unchangedBlocks = median(unchangedBlocks_);
        printLine("unchanged frame", numberText(unchangedBlocks, 0), limitText(unchangedBlocks, 0, 0));
        // The clock may move on between the two drawings of a frame, but not often.
        const bool sameWork = std::min(equalFrames_, equalChangingFrames_) > kPasses / 2;
        printLine("frames that were equal, byte for byte",
                  std::to_string(equalFrames_ + equalChangingFrames_) + " of " + std::to_string(2 * kPasses),
                  sameWork ? "" : "the two do not draw the same, so the ratios say nothing");
        return sameWork;
    }

private:
    /// A reading is painted although its figures are those of the one before.
    void paint() {
        sampler_.dataReady = true;
        page_->Draw(&canvas_, {});
    }

    void composeAtRest() {
        canvas_.composePages(page_->bitmap(), nullptr, 0.0F, Panelix::TransitionKind::SlideFromBottom);
    }

    /// The next reading: as of a machine at work, with the clock of each part and its load going up and down.
    void changeFigures() {
        ++reading_;
        const int cpu = 55 + static_cast<int>(40.0 * std::sin(reading_ * 0.11)) + reading_ * 7 % 5;
        const int gpu = 45 + static_cast<int>(35.0 * std::sin(reading_ * 0.05));
        const int multiplier = 8 + cpu / 4;
        sampler_.cpuLoad = static_cast<std::uint32_t>(cpu);
        sampler_.memoryLoad = 50 + cpu / 10;
        sampler_.cpuClockText =
            std::to_wstring(multiplier * 100) + L".00MHz (100.00 x " + std::to_wstring(multiplier) + L".00)";
        sampler_.cpuVid = 1.0F + static_cast<float>(cpu) / 256.0F;
        sampler_.cpuTemperature = 40 + cpu / 3;
        sampler_.gpuStats.load = gpu;
        sampler_.gpuStats.memoryLoad = 30 + gpu / 4;
        sampler_.gpuStats.coreClock = 1'000'000U + static_cast<std::uint32_t>(gpu) * 10'000U;
        sampler_.gpuStats.temperature = 40 + gpu / 3;
        figures_.cpuLoad = cpu;
        figures_.memoryLoad = sampler_.memoryLoad;
        figures_.gpuLoad = gpu;
        figures_.gpuMemoryLoad = sampler_.gpuStats.memoryLoad;
        figures_.cpuClock = sampler_.cpuClockText;
        figures_.cpuVid = std::to_wstring(sampler_.cpuVid) + L"v";
        figures_.cpuTemperature = std::to_wstring(sampler_.cpuTemperature) + L" \u00B0C";
        figures_.gpuClock = std::to_wstring(1000 + gpu * 10) + L".00 MHz";
        figures_.gpuTemperature = std::to_wstring(40 + gpu / 3) + L" \u00B0C";
        figures_.cpuHistory.push_front(cpu);
        figures_.cpuHistory.pop_back();
        figures_.gpuHistory.push_front(gpu);
        figures_.gpuHistory.pop_back();
    }

    void comparePainted(Comparison& comparison, int& equalFrames) {
        comparison.add(
            [&] {
                const std::size_t before = allocationsSoFar();
                paint();
                composeAtRest();
                frame_ = canvas_.toLcdFrame();
                blocks_ = allocationsSoFar() - before;
            },
            [&] { bareFrame_ = bare_->run(sampler_.dateTimeText(), figures_); });
        equalFrames += std::memcmp(frame_.get(), bareFrame_.get(), Panelix::kLcdFrameBytes) == 0 ? 1 : 0;
    }

    void compareUnchanged() {
        // What was just painted; and both frames as warm as in a row of such passes.
        page_->Draw(&canvas_, {});
        handOver(bareFrame_);
        handOver(frame_);
        std::size_t blocks = 0;
        unchanged_.add(
            [&] {
                const std::size_t before = allocationsSoFar();
                page_->Draw(&canvas_, {});
                handOver(frame_);
                blocks = allocationsSoFar() - before;
            },
            [&] {
                sampler_.dateTimeText();
                handOver(frame_);
            });
        unchangedBlocks_.push_back(static_cast<double>(blocks));
    }

    void compareSteps() {
        atRest_.add([&] { composeAtRest(); }, [&] { bare_->compose(); });
        inASlide_.add(
            [&] {
                canvas_.composePages(
                    page_->bitmap(), &previous_, 0.5F, Panelix::TransitionKind::SlideFromBottom);
            },
            [&] { bare_->composeHalfASlide(&previous_); });
        conversion_.add([&] { frame_ = canvas_.toLcdFrame(); }, [&] { bareFrame_ = bare_->convert(); });
    }

    void handOver(const Panelix::LcdFrame& frame) {
        std::memcpy(handedOver_.data(), frame.get(), handedOver_.size());
    }

    BenchmarkApp app_;
    const Standins::LoadedCoreAudio audioClasses_;
    SystemInfo sampler_;
    Panelix::Canvas& canvas_ = *app_.canvas();
    MainPage* page_ = nullptr;
    std::unique_ptr<BarePass> bare_;
    Gdiplus::Bitmap previous_{kWidth, kHeight, PixelFormat32bppPARGB};

    Panelix::LcdFrame frame_;
    Panelix::LcdFrame bareFrame_;
    std::vector<std::uint8_t> handedOver_ = std::vector<std::uint8_t>(Panelix::kLcdFrameBytes);

    Figures figures_;
    int reading_ = 0;

    Comparison painted_;
    Comparison changing_;
    Comparison unchanged_;
    Comparison atRest_;
    Comparison inASlide_;
    Comparison conversion_;
    std::vector<double> paintedBlocks_;
    std::vector<double> unchangedBlocks_;
    /// Of the last painted frame.
    std::size_t blocks_ = 0;
    int equalFrames_ = 0;
    int equalChangingFrames_ = 0;
};

}  // namespace

int main() {
    // Apart from this machine's keyboard simulation and sound.
    Standins::useOwnSession();
    return Benchmark().run() ? 0 : 1;
}
