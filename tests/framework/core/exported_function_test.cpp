#include "framework/core/exported_function.h"

#include <gtest/gtest.h>

namespace {

using Panelix::exportedFunction;

TEST(ExportedFunction, IsTheLibrarysOwn) {
    auto* const processId =
        exportedFunction<DWORD WINAPI()>(GetModuleHandleW(L"kernel32.dll"), "GetCurrentProcessId");
    ASSERT_NE(processId, nullptr);
    EXPECT_EQ(processId(), GetCurrentProcessId());
}

TEST(ExportedFunction, MissingOneIsNull) {
    EXPECT_EQ(exportedFunction(GetModuleHandleW(L"kernel32.dll"), "NoSuchFunction"), nullptr);
}

// The system would search the program itself.
TEST(ExportedFunction, MissingLibraryHasNone) {
    EXPECT_EQ(exportedFunction(nullptr, "ExportOfThisProgram"), nullptr);
}

}  // namespace

// For the case above: without any export a null library would have none anyway.
extern "C" __declspec(dllexport) void ExportOfThisProgram() {}
