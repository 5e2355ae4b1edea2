#include "framework/core/app.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

#include "framework/core/lcd_device.h"
#include "framework/core/pass_pacing.h"
#include "framework/core/preview_window.h"
#include "framework/drawing/canvas.h"
#include "framework/drawing/sys_exception.h"

namespace Panelix {

namespace {

constexpr wchar_t kInitErrorTitle[] = L"Panelix Init Error";

/// How far a slide moves on in one pass, of 1.
constexpr float kSlideStep = 0.1F;

/// The preview window's procedure has no other way to the application.
App* currentApp = nullptr;

/// The monotonic clock: a changed wall clock must not stretch or swallow a wait. It counts standby too, which
/// shortens at most the wait of the pass that it falls into; the clock that leaves standby out is too coarse.
std::int64_t nowMs() {
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(sinceStart).count();
}

/// Null when there is no usable LCD.
std::unique_ptr<LcdDevice> bindLcd(const std::wstring& name) {
    auto lcd = std::make_unique<LcdDevice>();
    if (!lcd->Init(name)) {
        lcd.reset();
    }
    return lcd;
}

}  // namespace

App::App(HINSTANCE instance, const std::wstring& name, LPCWSTR icon, std::uint64_t framePeriodMs)
    : instance_(instance),
      framePeriodMs_(framePeriodMs),
      name_(name),
      lcd_(bindLcd(name_)) {
    if (lcd_) {
        handedOver_ = std::make_unique_for_overwrite<std::uint8_t[]>(kLcdFrameBytes);
    } else {
        previewWindow_ = std::make_unique<PreviewWindow>(instance_, name_, icon);
    }
    canvas_ = std::make_unique<Canvas>();
    currentApp = this;
}

App::~App() {
    currentApp = nullptr;
    // Pages hold GDI+ objects, which must go before the canvas ends GDI+.
    while (!pages_.empty()) {
        pages_.pop_front();
    }
    canvas_.reset();
    lcd_.reset();
    // The window and its tray icon stay until the process ends: the icon is removed by WM_DESTROY only, and
    // nothing here destroys the window.
}

App* App::current() {
    return currentApp;
}

HWND App::window() const {
    return previewWindow_ ? previewWindow_->handle() : nullptr;
}

void App::SetMainPage(std::unique_ptr<Page> page) {
    mainPage_ = page.get();
    if (mainPage_ == nullptr) {
        throw SysException(L"Main page empty", kInitErrorTitle);
    }
    try {
        mainPage_->Init(canvas_.get());
        pages_.push_back(std::move(page));
    } catch (...) {
        // The page goes with the parameter.
        mainPage_ = nullptr;
        throw;
    }
    mainPage_->OnActivate();
    activePage_ = mainPage_;
}

void App::AddPage(std::unique_ptr<Page> page, bool atFront) {
    pages_.insert(atFront ? pages_.begin() : pages_.end(), std::move(page));
}

Page* App::FindPage(const std::wstring& name) const {
    const auto found = std::find_if(
        pages_.begin(), pages_.end(), [&name](const auto& page) { return page->name() == name; });
    return found != pages_.end() ? found->get() : nullptr;
}

void App::SwitchPage(Page* page, TransitionKind kind) {
    if (page == nullptr || activePage_ == nullptr) {
        return;
    }
    previousPage_ = std::exchange(activePage_, page);
    slideKind_ = kind;
    slideRuns_ = true;
    // A switch during a slide starts where the mirrored slide stands, so that the picture does not jump.
    slideProgress_ = slideProgress_ < 1.0F ? 1.0F - slideProgress_ : 0.0F;
    previousPage_->OnDeactivate();
    if (lcd_) {
        // The press that caused the switch is no news to the pages that are ticked after this one.
        lcd_->PollButtons();
    }
    activePage_->OnActivate();
}

void App::Run() {
    if (activePage_ == nullptr) {
        throw SysException(L"Main page not created or activated", kInitErrorTitle);
    }
    for (const auto& page : pages_) {
        page->Init(canvas_.get());
    }
    while (runPass()) {
    }
}

bool App::runPass() {
    resetPacing_ = false;
    const std::int64_t startMs = nowMs();
    bool goOn = true;
    if (lcd_) {
        lcd_->PollButtons();
    } else {
        goOn = pumpMessages();
    }
    goOn = updatePages() && goOn;
    composeFrame();
    outputFrame();
    pace(startMs);
    return goOn;
}

bool App::pumpMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        if (message.message == WM_QUIT) {
            return false;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
        previewWindow_->rethrowPending();
    }
    return true;
}

bool App::updatePages() {
    for (const auto& page : pages_) {
        // Asked anew for each page: an Update may switch pages.
        if (!page->Update(page.get() == activePage_, buttons())) {
            return false;
        }
        if (page.get() == activePage_) {
            page->Draw(canvas_.get(), buttons());
        }
    }
    return true;
}

const LcdButtons& App::buttons() const {
    return lcd_ ? lcd_->Buttons() : desktopButtons_;
}

void App::composeFrame() {
    const bool painted = activePage_->takeChanged();
    if (slideRuns_) {
        composeSlide();
    } else if (painted || activePage_ != composedPage_) {
        const bool composed =
            canvas_->composePages(activePage_->bitmap(), nullptr, 0.0F, TransitionKind::SlideFromBottom);
        composedPage_ = composed ? activePage_ : nullptr;
        canvasChanged_ = true;
    }
}

void App::composeSlide() {
    slideProgress_ += kSlideStep;
    if (slideProgress_ > 1.0F) {
        slideProgress_ = 1.0F;
        slideRuns_ = false;
    }
    canvas_->composePages(activePage_->bitmap(), previousPage_->bitmap(), slideProgress_, slideKind_);
    composedPage_ = nullptr;
    canvasChanged_ = true;
}

void App::outputFrame() {
    if (lcd_) {
        if (canvasChanged_) {
            frame_ = canvas_->toLcdFrame();
        }
        // The library may write into what it gets, and one frame may be shown for many passes.
        std::memcpy(handedOver_.get(), frame_.get(), kLcdFrameBytes);
        lcd_->PushFrame(handedOver_);
        lcd_->Update();
    } else if (canvasChanged_) {
        previewWindow_->invalidate();
    }
    canvasChanged_ = false;
}

void App::pace(std::int64_t startMs) {
    sleeper_.sleepFor(passWaitMs({.startMs = startMs,
                                  .endMs = nowMs(),
                                  .resetPacing = resetPacing_,
                                  .slideRunning = slideRuns_,
                                  .framePeriodMs = framePeriodMs_}));
}

}  // namespace Panelix
