#include "app/run_reported.h"

#include <exception>
#include <string>

#include "framework/drawing/sys_exception.h"

int runReported(const std::function<void()>& step) {
    try {
        step();
        return kExitNormal;
    } catch (const Panelix::SysException& error) {
        const std::wstring caption = L"Kelvaro - " + error.title;
        MessageBoxW(nullptr, error.message.c_str(), caption.c_str(), kErrorBoxStyle);
    } catch (const std::exception& error) {
        MessageBoxA(nullptr, error.what(), "Kelvaro - Fatal Error", kErrorBoxStyle);
    }
    return kExitError;
}
