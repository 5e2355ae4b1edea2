#pragma once

#include "app/report/report_writer.h"

// The parts of the report, each the content of one section. They ask what the program asks, through the
// program's own classes, and change nothing. What they throw is the section's end.

/// This program, Kelvaro beside it, and whether that runs.
void reportProgram(ReportWriter& writer);
void reportWindows(ReportWriter& writer);
/// The Run entry, Task Manager's switch for it, and the installation entry.
void reportStart(ReportWriter& writer);
/// What Windows left of crashes of Kelvaro. The dumps are listed and not opened.
void reportDumps(ReportWriter& writer);
void reportCpuLoad(ReportWriter& writer);
void reportMemory(ReportWriter& writer);
/// Counts only: an account's name is an address.
void reportMail(ReportWriter& writer);
/// All adapters with an installed driver, whether or not Kelvaro reads their figures.
void reportDisplayAdapters(ReportWriter& writer);
void reportGamepad(ReportWriter& writer);
/// COM must run on the thread in this and in reportFigures().
void reportSound(ReportWriter& writer);
void reportCoreTemp(ReportWriter& writer);
void reportNvidia(ReportWriter& writer);
void reportAmd(ReportWriter& writer);
/// `start`: the library is started and ended, which shows on the keyboard.
void reportLcd(ReportWriter& writer, bool start);
/// Two samples of the program's sampler, its period apart.
void reportFigures(ReportWriter& writer);
