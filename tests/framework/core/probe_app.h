#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "framework/core/app.h"
#include "framework/core/page.h"

/// An application without pages of its own.
class ProbeApp : public Panelix::App {
public:
    explicit ProbeApp(std::uint64_t framePeriodMs = 20)
        : App(GetModuleHandleW(nullptr), L"Probe", IDI_APPLICATION, framePeriodMs) {}

    void HandleCommand(std::uint32_t command) override {
        commands.push_back(command);
        if (onCommand) {
            onCommand(command);
        }
    }

    std::vector<std::uint32_t> commands;
    std::function<void(std::uint32_t)> onCommand;
};

/// What happened to the pages of a test, in order: "main.Init", "other.Update active" and so on.
using CallLog = std::vector<std::string>;

/// A page of one colour, painted when it is first initialised, that notes its calls and does what a test asks
/// of it.
class ProbePage : public Panelix::Page {
public:
    ProbePage(std::string label,
              Panelix::App* app,
              CallLog* log,
              Gdiplus::Color color = Gdiplus::Color::Black)
        : Page(std::wstring(label.begin(), label.end()), app),
          label_(std::move(label)),
          log_(log),
          color_(color) {}
    ~ProbePage() override {
        note("destroyed");
        if (onDestroy) {
            onDestroy();
        }
    }

    void Init(Panelix::Canvas* canvas) override {
        note(canvas != nullptr ? "Init" : "Init without canvas");
        if (onInit) {
            onInit();
        }
        if (!initialised_) {
            paint(color_);
        }
        initialised_ = true;
    }
    void OnActivate() override { note("OnActivate"); }
    void OnDeactivate() override { note("OnDeactivate"); }

    bool Update(bool isActive, const Panelix::LcdButtons& buttons) override {
        note(isActive ? "Update active" : "Update");
        return !onUpdate || onUpdate(buttons);
    }
    void Draw(Panelix::Canvas*, const Panelix::LcdButtons& buttons) override {
        note("Draw");
        if (onDraw) {
            onDraw(buttons);
        }
    }

    void paint(Gdiplus::Color color) { beginPainting().Clear(color); }

    std::function<void()> onInit;
    std::function<bool(const Panelix::LcdButtons&)> onUpdate;
    std::function<void(const Panelix::LcdButtons&)> onDraw;
    /// Must not throw.
    std::function<void()> onDestroy;

private:
    void note(const char* what) { log_->push_back(label_ + "." + what); }

    std::string label_;
    CallLog* log_;
    Gdiplus::Color color_;
    bool initialised_ = false;
};
