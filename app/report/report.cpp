#include "app/report/report.h"

#include <optional>
#include <string>

#include "app/report/private_names.h"
#include "app/report/sections.h"
#include "framework/core/com_apartment.h"

namespace {

void writeHead(ReportWriter& writer) {
    writer.line(L"Kelvaro report: what Kelvaro finds on this machine, and what it does not");
    writer.line(L"");
    writer.line(
        L"The names of users, of computers, of the domain and of mail accounts are left out. Audio devices "
        L"stand");
    writer.line(L"here under the names that Windows shows: read the text before you send it.");
}

void writeEnd(ReportWriter& writer) {
    writer.line(L"");
    if (writer.incomplete().empty()) {
        writer.line(L"Everything could be looked at.");
        return;
    }
    std::wstring titles;
    for (const std::wstring& title : writer.incomplete()) {
        titles += (titles.empty() ? L"" : L", ") + title;
    }
    writer.line(L"Not everything could be looked at: " + titles);
}

}  // namespace

// What only asks Windows comes first, and then the drivers, whose faults may end the process.
int writeReport(const ReportOptions& options, const ReportWriter::Sink& sink) {
    const PrivateNames names = currentPrivateNames();
    ReportWriter writer(sink, [&](std::wstring text) { return withoutPrivateNames(std::move(text), names); });
    writeHead(writer);
    writer.section(L"Program", [&] { reportProgram(writer); });
    writer.section(L"Windows", [&] { reportWindows(writer); });
    writer.section(L"Start with Windows", [&] { reportStart(writer); });
    writer.section(L"Crashes", [&] { reportDumps(writer); });
    writer.section(L"CPU load", [&] { reportCpuLoad(writer); });
    writer.section(L"Memory", [&] { reportMemory(writer); });
    writer.section(L"Display adapters", [&] { reportDisplayAdapters(writer); });
    writer.section(L"Mail", [&] { reportMail(writer); });
    writer.section(L"Gamepad", [&] { reportGamepad(writer); });
    // Each on its own, as COM may refuse.
    writer.section(L"Sound", [&] {
        const Panelix::ComApartment apartment;
        reportSound(writer);
    });
    writer.section(L"Core Temp", [&] { reportCoreTemp(writer); });
    writer.section(L"NVIDIA", [&] { reportNvidia(writer); });
    writer.section(L"AMD", [&] { reportAmd(writer); });
    writer.section(L"LCD", [&] { reportLcd(writer, options.lcd); });
    writer.section(L"Figures, two samples", [&] {
        const Panelix::ComApartment apartment;
        reportFigures(writer);
    });
    writeEnd(writer);
    return writer.incomplete().empty() ? kExitComplete : kExitIncomplete;
}
