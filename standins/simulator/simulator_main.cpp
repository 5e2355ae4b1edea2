#include <windows.h>

#include <cstdio>
#include <exception>
#include <string>

#include "framework/core/unique_resource.h"
#include "standins/shared_record.h"
#include "standins/simulator/simulated_machine.h"

// Moves the figures of a simulated machine for Kelvaro under Wine. See printUsage().

namespace {

constexpr DWORD kStepMs = 100;

void printUsage() {
    std::puts(
        "Usage: simulator.exe [--forget]\n"
        "\n"
        "Moves the figures of a simulated machine, which the stand-ins of the vendor libraries hand to "
        "Kelvaro,\n"
        "until it is ended or its input is closed. Says \"ready\" once the figures are there; start Kelvaro "
        "then.\n"
        "\n"
        "  --forget   remove the simulated mail account from the registry and end");
}

bool inputIsClosed() {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    DWORD waiting = 0;
    return GetFileType(input) == FILE_TYPE_PIPE &&
           PeekNamedPipe(input, nullptr, 0, nullptr, &waiting, nullptr) == FALSE;
}

void simulate() {
    Standins::SimulatedMachine machine;
    std::puts("ready");
    std::fflush(stdout);
    const std::uint64_t startUs = Standins::nowMicroseconds();
    while (!inputIsClosed()) {
        machine.setTime(static_cast<double>(Standins::nowMicroseconds() - startUs) / 1e6);
        Sleep(kStepMs);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string option = argc > 1 ? argv[1] : "";
    if (argc > 2 || (!option.empty() && option != "--forget")) {
        printUsage();
        return option == "--help" ? 0 : 2;
    }
    if (option == "--forget") {
        Standins::removeSimulatedMail();
        return 0;
    }
    try {
        simulate();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "simulator: %s\n", error.what());
        return 1;
    }
    Standins::removeSimulatedMail();
    return 0;
}
