#include <windows.h>

#include <gdiplus.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "framework/core/lcd_sdk_abi.h"
#include "pages/audio_device_page.h"
#include "pages/main_page.h"
#include "pages/options_page.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/core_audio/virtual_audio.h"
#include "stats/clock_text.h"
#include "stats/system_info.h"
#include "tests/framework/core/lcd_fixture.h"
#include "tests/framework/core/probe_app.h"
#include "tests/pages/expected_list_page.h"
#include "tests/pages/expected_main_page.h"
#include "tests/pages/sample_snapshot.h"
#include "tests/support/failing_gdiplus.h"
#include "tests/support/gdiplus_ledger.h"
#include "tests/support/temporary_folder.h"

// The pages paint, and the application composes and converts, only what changed. Here every pass of a long,
// random run is painted, composed and converted anew beside them, by a model of pages and application that
// knows nothing of what was there before.

namespace {

using Panelix::kLcdFrameBytes;
using Panelix::LcdButton;
using Panelix::LcdButtons;
using Panelix::LcdFrame;
using Panelix::TransitionKind;
namespace LcdSdk = Panelix::LcdSdk;

constexpr int kGraphColumns = 201;
/// So many readings in a row, of so many, may be beyond the scale. They stay in the graphs for a whole
/// history.
constexpr unsigned kReadingsBeyondScale = 4;
constexpr unsigned kReadings = 400;

constexpr unsigned kUsualPasses = 2'000;
/// Where ./test.sh was told to run the long forms of tests.
constexpr unsigned kLongFormPasses = 20'000;

unsigned numberFromEnvironment(const char* name, unsigned otherwise) {
    const char* const text = std::getenv(name);
    return text != nullptr ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

/// The figures are the test's: sampling leaves them alone.
class GivenFigures : public SystemInfo {
public:
    void update() override {}
};

enum class PageName { Main, Devices, Options };
constexpr std::array kPages{PageName::Main, PageName::Devices, PageName::Options};
const std::array<std::wstring, 3> kDevices{
    L"Speakers (High Definition Audio Device)", L"Headphones (USB Audio Device)", L"Monitor (Display Audio)"};

/// What pages and application do at the press of buttons, without any picture.
class Model {
public:
    /// One pass. `readingDue` is the snapshot's dataReady before it.
    void pass(LcdButtons buttons, bool readingDue) {
        painted.reset();
        screenshot = false;
        dataReady = readingDue;
        recorded = false;
        advanceBlink();
        for (const PageName page : kPages) {
            if (page != active) {
                continue;
            }
            draw(page, buttons);
            if (page != active) {
                // The application has asked for the buttons anew.
                buttons.pressed.fill(false);
            }
        }
        slideShown = slideRuns;
        if (slideRuns) {
            progress += 0.1F;
            if (progress > 1.0F) {
                progress = 1.0F;
                slideRuns = false;
            }
        }
    }

    PageName active = PageName::Main;
    PageName previous = PageName::Main;
    TransitionKind kind = TransitionKind::SlideFromBottom;
    float progress = 1.0F;
    bool slideRuns = false;
    /// The pass is composed as a step of a slide.
    bool slideShown = false;

    int channel = 0;
    bool pictureMode = false;
    bool blinkOn = false;
    int defaultDevice = 0;
    int activeDevice = 0;
    int cursor = 0;
    int option = 0;

    /// Of the pass: the page that paints, if any, whether a screenshot is saved, whether the reading goes
    /// into the histories, and what is left of dataReady.
    std::optional<PageName> painted;
    bool screenshot = false;
    bool recorded = false;
    bool dataReady = false;

private:
    void advanceBlink() {
        if (blinkCountdown_ == 0) {
            blinkOn = !blinkOn;
            blinkCountdown_ = 8;
        } else {
            --blinkCountdown_;
        }
    }

    void draw(PageName page, const LcdButtons& buttons) {
        switch (page) {
            case PageName::Main:
                drawMain(buttons);
                break;
            case PageName::Devices:
                drawDevices(buttons);
                break;
            case PageName::Options:
                drawOptions(buttons);
                break;
        }
    }

    void drawMain(const LcdButtons& buttons) {
        if (buttons.isPressed(LcdButton::Menu)) {
            switchTo(PageName::Devices, TransitionKind::SlideFromBottom);
            return;
        }
        pictureMode = pictureMode != buttons.isPressed(LcdButton::Ok);
        if (!pictureMode) {
            if (buttons.isPressed(LcdButton::Left)) {
                channel = (channel + 2) % 3;
            } else if (buttons.isPressed(LcdButton::Right)) {
                channel = (channel + 1) % 3;
            }
            screenshot = channel == 0 && buttons.isPressed(LcdButton::Down);
            recorded = dataReady;
        }
        dataReady = false;
        painted = PageName::Main;
    }

    void drawDevices(const LcdButtons& buttons) {
        if (buttons.isPressed(LcdButton::Menu) || buttons.isPressed(LcdButton::Cancel)) {
            switchTo(PageName::Main, TransitionKind::SlideFromTop);
        } else if (buttons.isPressed(LcdButton::Right)) {
            switchTo(PageName::Options, TransitionKind::SlideFromRight);
        } else if (buttons.isPressed(LcdButton::Ok) && !buttons.isPressed(LcdButton::Up) &&
                   !buttons.isPressed(LcdButton::Down)) {
            defaultDevice = cursor;
            switchTo(PageName::Main, TransitionKind::SlideFromTop);
        } else {
            cursor = moved(cursor, buttons);
            painted = PageName::Devices;
        }
    }

    void drawOptions(const LcdButtons& buttons) {
        if (buttons.isPressed(LcdButton::Menu)) {
            switchTo(PageName::Main, TransitionKind::SlideFromTop);
        } else if (buttons.isPressed(LcdButton::Cancel) || buttons.isPressed(LcdButton::Left)) {
            switchTo(PageName::Devices, TransitionKind::SlideFromLeft);
        } else if (buttons.isPressed(LcdButton::Ok) && !buttons.isPressed(LcdButton::Up) &&
                   !buttons.isPressed(LcdButton::Down)) {
            switchTo(PageName::Main, TransitionKind::SlideFromTop);
        } else {
            option = moved(option, buttons);
            painted = PageName::Options;
        }
    }

    /// A row of three.
    static int moved(int row, const LcdButtons& buttons) {
        if (buttons.isPressed(LcdButton::Down)) {
            return std::min(row + 1, 2);
        }
        return buttons.isPressed(LcdButton::Up) ? std::max(row - 1, 0) : row;
    }

    void switchTo(PageName page, TransitionKind transition) {
        previous = active;
        active = page;
        kind = transition;
        slideRuns = true;
        progress = progress < 1.0F ? 1.0F - progress : 0.0F;
        if (page == PageName::Devices) {
            activeDevice = defaultDevice;
            cursor = defaultDevice;
        } else if (page == PageName::Options) {
            option = 0;
        }
    }

    int blinkCountdown_ = 8;
};

/// The program's pages in an application on the virtual keyboard, and a page in front of them that checks the
/// pass before and prepares the next one. It is never shown.
class EveryPass : public WithKeyboard {
protected:
    EveryPass() : random_(seed_) {
        for (const wchar_t* key : {L"Shell Folders", L"User Shell Folders"}) {
            RegistryOverride::setText(
                HKEY_CURRENT_USER,
                std::wstring(L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\") + key,
                L"Personal",
                documents_.path());
        }
        auto devicePage = std::make_unique<AudioDevicePage>(&app_, &sampler_);
        auto mainPage = std::make_unique<MainPage>(&app_, &sampler_, devicePage.get());
        mainPage_ = mainPage.get();
        app_.SetMainPage(std::move(mainPage));
        app_.AddPage(std::move(devicePage), false);
        app_.AddPage(std::make_unique<OptionsPage>(&app_), false);
        auto driver = std::make_unique<ProbePage>("driver", &app_, &log_);
        driver->onUpdate = [this](const LcdButtons& buttons) { return drive(buttons); };
        app_.AddPage(std::move(driver), true);
        setOrdinaryFigures(sampler_);
        PagePainter backdrop(&canvas_);
        expectedMain_.paintBackdrop(backdrop);
        Gdiplus::Graphics(&backdrop_).DrawImage(backdrop.bitmap(), 0, 0);
        expectedMain_.backdrop = &backdrop_;
        for (std::unique_ptr<PagePainter>& page : painted_) {
            page = std::make_unique<PagePainter>(&canvas_);
        }
        shown_ = canvas_.toLcdFrame();
        fillHistories();
    }

    void run() {
        std::printf("KELVARO_SEED=%u KELVARO_PASSES=%u\n", seed_, passes_);
        const auto start = std::chrono::steady_clock::now();
        const GdiplusLedger ledger;
        app_.Run();
        const int conversions = ledger.taken()["GDI bitmap"] - static_cast<int>(checked_);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        std::printf(
            "%u passes checked in %.0f s, %d of them shown anew, %u pages painted anew, %u switches, "
            "%u screenshots, %u with a failed call of GDI+\n"
            "%u paintings of the main page, %u of them without a line drawn, %u with less than half of the "
            "texts\n",
            checked_,
            taken.count(),
            conversions,
            repainted_,
            switches_,
            screenshots_,
            failures_,
            mainPaintings_,
            chosenGraphs_,
            copiedTexts_);
        EXPECT_EQ(checked_, passes_);
        EXPECT_LT(conversions, static_cast<int>(checked_) * 9 / 10) << "some passes change nothing";
        EXPECT_GT(switches_, 0U);
        EXPECT_GT(screenshots_, 0U);
        EXPECT_GT(failures_, 0U);
        EXPECT_GT(chosenGraphs_, mainPaintings_ / 20);
        EXPECT_GT(copiedTexts_, mainPaintings_ / 20);
    }

private:
    /// A minute's readings before the first pass.
    void fillHistories() {
        for (int reading = 0; reading < kGraphColumns; ++reading) {
            sampler_.dataReady = true;
            sampler_.cpuLoad = static_cast<std::uint32_t>(load());
            sampler_.gpuStats.load = load();
            recordReading();
            mainPage_->Draw(app_.canvas(), {});
        }
    }

    bool drive(const LcdButtons& buttons) {
        endPass();
        log_.clear();
        if (pass_ > 0 && !check()) {
            return false;
        }
        if (pass_ == passes_) {
            return false;
        }
        ++pass_;
        // A device that was chosen may have been bound; its notices would come at any time.
        sampler_.releaseAudio();
        changeFigures();
        const PageName before = model_.active;
        model_.pass(buttons, sampler_.dataReady);
        switches_ += model_.active != before ? 1U : 0U;
        if (chance(100)) {
            // As if the images were new.
            mainPage_->Init(app_.canvas());
        }
        const bool mayFail = chance(20);
        chooseButtons(mayFail);
        // A painting with all of its lines has about 500 calls, one without them about 50.
        gdiplus_.failCall(mayFail ? 1 + static_cast<int>(below(chance(3) ? 500 : 50)) : 0);
        return true;
    }

    /// From here on the calls are the test's own.
    void endPass() {
        hasFailed_ = gdiplus_.hasFailed();
        failures_ += hasFailed_ ? 1U : 0U;
        // Only the main page fills as many rectangles: its bars.
        if (gdiplus_.calls("GdipFillRectangleI") > 2) {
            ++mainPaintings_;
            chosenGraphs_ += gdiplus_.calls("GdipDrawLineI") == 0 ? 1U : 0U;
            copiedTexts_ += gdiplus_.calls("GdipDrawString") < 6 ? 1U : 0U;
        }
        gdiplus_.failCall(0);
    }

    unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
    bool chance(unsigned oneOf) { return below(oneOf) == 0; }
    /// A figure in percent, some beyond the scale, and often one that was there before.
    int percent() { return std::array{0, 1, 37, 38, 62, 99, 100, 101, 150, -20, 400, -400}[below(12)]; }
    /// Also in percent, on the scale but for a few readings in a row.
    int load() {
        if (readings_ % kReadings < kReadingsBeyondScale) {
            return percent();
        }
        return chance(2) ? std::array{0, 1, 37, 38, 62, 99, 100, 100}[below(8)]
                         : static_cast<int>(below(101));
    }
    int volume() { return std::array{0, 1, 50, 51, 99, 100}[below(6)]; }

    /// What drivers may call a processor: also far too long, in many lines, and in characters that the font
    /// lacks.
    std::wstring name() {
        const std::array<std::wstring, 12> kNames{L"Core i7-8700K @ 3.70GHz",
                                                  L"Ryzen",
                                                  L"GeForce GTX 1080",
                                                  L"",
                                                  L" ",
                                                  std::wstring(80, L'W'),
                                                  L"Q|jgy&&A&B()[]{}_^~",
                                                  L"\u00C5\u00DC\u0110\u1EA4 \u00AE\u2122",
                                                  L"\u4E2D\u6587 \u0627\u0644 \xD83D\xDE00",
                                                  L"\tTab\tand\x01 more",
                                                  L"Two\nlines",
                                                  L"1\r\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n13\n14"};
        return kNames[below(kNames.size())];
    }

    void changeFigures() {
        if (chance(2)) {
            takeReading();
        }
        if (chance(6)) {
            changeOneFigure();
        }
        if (chance(8)) {
            takeNotice();
        }
    }

    void takeReading() {
        sampler_.dataReady = true;
        if (chance(2)) {
            sampler_.cpuLoad = static_cast<std::uint32_t>(load());
            sampler_.memoryLoad = percent();
            sampler_.gpuStats.load = load();
            sampler_.gpuStats.memoryLoad = percent();
        }
    }

    void changeOneFigure() {
        switch (below(17)) {
            case 0:
                sampler_.cpuTemperature = std::array{-7, 54, 55, 100}[below(4)];
                break;
            case 1:
                sampler_.cpuTempFahrenheit = chance(2);
                break;
            case 2:
                sampler_.cpuName = name();
                break;
            case 3:
                sampler_.cpuClockText =
                    std::array{L"3600.00MHz (100.00 x 36.00)", L"800.00MHz (100.00 x 8.00)"}[below(2)];
                break;
            case 4:
                // The two zeros are equal and look different.
                sampler_.cpuVid = std::array{0.0F, -0.0F, 1.25F, 1.25001F}[below(4)];
                break;
            case 5:
                sampler_.coreTempAvailable = !chance(4);
                break;
            case 6:
                sampler_.gpuStats.temperature = std::array{-1, 61, 62}[below(3)];
                break;
            case 7:
                sampler_.gpuStats.coreClock = std::array{0U, 1'350'000U, 1'350'009U}[below(3)];
                break;
            case 8:
                sampler_.gpuStats.loadValid = !chance(4);
                break;
            case 9:
                sampler_.gpuStats.temperatureValid = !chance(4);
                break;
            case 10:
                sampler_.gpuStats.memoryLoadValid = !chance(4);
                break;
            case 11:
                sampler_.gpuStats.coreClockValid = !chance(4);
                break;
            case 12:
                sampler_.gpuName = name();
                break;
            case 13:
                sampler_.gpuAvailable = !chance(4);
                break;
            case 14:
                sampler_.unreadMail = std::array{-1, 0, 1, 3}[below(4)];
                break;
            default:
                sampler_.gamepadBattery = static_cast<std::int32_t>(below(6));
                break;
        }
    }

    /// What a notification of Core Audio writes.
    void takeNotice() {
        if (chance(2)) {
            sampler_.microphoneMuted = chance(2);
            return;
        }
        sampler_.speakerLeftVolume = volume();
        sampler_.speakerRightVolume = volume();
        sampler_.speakerMasterVolume = volume();
        sampler_.speakerMuted = chance(2);
    }

    /// The buttons of the next pass: often those of this one, or none; `quiet` for none.
    void chooseButtons(bool quiet) {
        constexpr std::array<std::uint32_t, 7> kMasks{LcdSdk::kButtonUp,
                                                      LcdSdk::kButtonRight,
                                                      LcdSdk::kButtonDown,
                                                      LcdSdk::kButtonLeft,
                                                      LcdSdk::kButtonMenu,
                                                      LcdSdk::kButtonOk,
                                                      LcdSdk::kButtonCancel};
        switch (below(4)) {
            case 0:
                break;
            case 1:
                mask_ = kMasks[below(7)];
                mask_ |= chance(6) ? kMasks[below(7)] : 0U;
                break;
            default:
                mask_ = 0;
                break;
        }
        if (model_.active == PageName::Options && model_.option == 2) {
            // It would end the program.
            mask_ &= ~std::uint32_t{LcdSdk::kButtonOk};
        }
        if (quiet) {
            // What failed is made up for by the page that shows it.
            mask_ = 0;
        }
        ASSERT_TRUE(keyboard.addScriptStep(mask_, 1));
    }

    /// Paints, composes and converts the last pass, and compares.
    bool check() {
        EXPECT_EQ(sampler_.dataReady, model_.dataReady);
        if (model_.screenshot) {
            checkScreenshot();
        }
        paint();
        Gdiplus::Bitmap* const previous = model_.slideShown ? pageOf(model_.previous).bitmap() : nullptr;
        canvas_.composePages(pageOf(model_.active).bitmap(), previous, model_.progress, model_.kind);
        shown_ = canvas_.toLcdFrame();
        ++checked_;
        const std::optional<Standins::G19Frame> frame = keyboard.frame(checked_);
        if (!frame || frame->pixels.size() != kLcdFrameBytes) {
            ADD_FAILURE() << "no frame in pass " << checked_;
            return false;
        }
        const auto [wrong, right] = std::mismatch(frame->pixels.begin(), frame->pixels.end(), shown_.get());
        // What a failed call has left undone is anybody's guess, and made up for in the pass after it.
        if (wrong != frame->pixels.end() && !hasFailed_) {
            const auto pixel = (wrong - frame->pixels.begin()) / 4;
            ADD_FAILURE() << "pass " << checked_ << ", page " << static_cast<int>(model_.active)
                          << ", first at (" << pixel % 320 << ", " << pixel / 320 << ")";
        }
        return !testing::Test::HasFailure();
    }

    PagePainter& pageOf(PageName page) { return *painted_[static_cast<std::size_t>(page)]; }

    void paint() {
        if (!model_.painted) {
            return;
        }
        ++repainted_;
        painted_[static_cast<std::size_t>(*model_.painted)] = std::make_unique<PagePainter>(&canvas_);
        PagePainter& page = pageOf(*model_.painted);
        switch (*model_.painted) {
            case PageName::Main:
                paintMain(page);
                break;
            case PageName::Devices:
                paintDevices(page);
                break;
            case PageName::Options:
                paintOptions(page);
                break;
        }
    }

    void paintMain(PagePainter& page) {
        if (model_.pictureMode) {
            page.bitmapImage(105, 0, 0);
            return;
        }
        if (model_.recorded) {
            recordReading();
        }
        expectedMain_.selectedChannel = model_.channel;
        expectedMain_.blinkOn = model_.blinkOn;
        expectedMain_.clock = clockText(sampler_.timeRecord);
        expectedMain_.paint(page);
    }

    void recordReading() {
        ++readings_;
        record(expectedMain_.cpuHistory, static_cast<int>(sampler_.cpuLoad));
        if (sampler_.gpuAvailable && sampler_.gpuStats.loadValid) {
            record(expectedMain_.gpuHistory, sampler_.gpuStats.load);
        }
    }

    static void record(std::deque<int>& history, int value) {
        history.push_front(value);
        history.resize(std::min<std::size_t>(history.size(), kGraphColumns));
    }

    void paintDevices(PagePainter& page) const {
        std::vector<ExpectedRow> rows;
        for (int i = 0; i < 3; ++i) {
            const std::uint32_t cursorColour = i == model_.cursor ? 0x3280FFFF : 0;
            rows.push_back({kDevices[static_cast<std::size_t>(i)],
                            i == model_.activeDevice ? 0xC8008080 : cursorColour});
        }
        paintExpectedList(page, L"Active Audio Device", ExpectedArrow::Right, rows);
    }

    void paintOptions(PagePainter& page) const {
        std::vector<ExpectedRow> rows{{L"About"}, {L"Settings"}, {L"Exit Applet"}};
        rows[static_cast<std::size_t>(model_.option)].highlight = 0x3280FFFF;
        paintExpectedList(page, L"Options", ExpectedArrow::Left, rows);
    }

    /// What was saved is the frame of the pass before.
    void checkScreenshot() {
        ++screenshots_;
        const std::vector<std::wstring> files = documents_.files();
        ASSERT_EQ(files.size(), 1U);
        const std::wstring path = documents_.path() + L"\\" + files[0];
        {
            Gdiplus::Bitmap saved(path.c_str());
            const PagePixels pixels(saved);
            for (int i = 0; i < PagePixels::kWidth * PagePixels::kHeight; ++i) {
                std::uint32_t expected = 0;
                std::memcpy(&expected, shown_.get() + std::ptrdiff_t{i} * 4, 4);
                const int x = i % PagePixels::kWidth;
                const int y = i / PagePixels::kWidth;
                ASSERT_EQ(pixels.at(x, y) & 0xFFFFFFU, expected & 0xFFFFFFU) << x << ", " << y;
            }
        }
        EXPECT_NE(DeleteFileW(path.c_str()), FALSE);
    }

    struct UsualAudio : Standins::VirtualAudio {
        UsualAudio() { addUsualDevices(); }
    };

    const unsigned seed_ = numberFromEnvironment("KELVARO_SEED", std::random_device{}());
    const unsigned passes_ = numberFromEnvironment(
        "KELVARO_PASSES", std::getenv("KELVARO_ALL") != nullptr ? kLongFormPasses : kUsualPasses);
    std::mt19937 random_;
    TemporaryFolder documents_;
    CallLog log_;
    UsualAudio audio_;
    ProbeApp app_{1};
    Standins::LoadedCoreAudio audioClasses_;
    GivenFigures sampler_;
    FailingGdiplus gdiplus_;
    MainPage* mainPage_ = nullptr;

    Model model_;
    std::uint32_t mask_ = 0;
    unsigned pass_ = 0;
    unsigned checked_ = 0;
    unsigned repainted_ = 0;
    unsigned switches_ = 0;
    unsigned screenshots_ = 0;
    unsigned failures_ = 0;
    unsigned mainPaintings_ = 0;
    unsigned chosenGraphs_ = 0;
    unsigned copiedTexts_ = 0;
    /// Recorded so far, and some more: the first ones are on the scale.
    unsigned readings_ = kReadingsBeyondScale;
    bool hasFailed_ = false;
    /// What the pass that is checked must look like.
    Panelix::Canvas canvas_;
    Gdiplus::Bitmap backdrop_{PagePixels::kWidth, PagePixels::kHeight, PixelFormat32bppPARGB};
    ExpectedMainPage expectedMain_{.snapshot = &sampler_};
    std::array<std::unique_ptr<PagePainter>, kPages.size()> painted_;
    LcdFrame shown_;
};

TEST_F(EveryPass, ShowsWhatPaintingComposingAndConvertingAnewShow) {
    run();
}

}  // namespace
