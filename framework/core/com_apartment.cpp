#include "framework/core/com_apartment.h"

#include <windows.h>

#include <objbase.h>

#include "framework/drawing/sys_exception.h"

namespace Panelix {

ComApartment::ComApartment() {
    if (FAILED(CoInitialize(nullptr))) {
        throw SysException(L"Cannot initialise COM library", L"Panelix Init Error");
    }
}

ComApartment::~ComApartment() {
    CoUninitialize();
}

}  // namespace Panelix
