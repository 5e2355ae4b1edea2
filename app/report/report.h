#pragma once

#include "app/report/report_options.h"
#include "app/report/report_writer.h"

/// Exit codes of the report.
inline constexpr int kExitComplete = 0;
inline constexpr int kExitIncomplete = 1;
inline constexpr int kExitWrongCommandLine = 2;

/// Writes the whole report and returns kExitComplete, or kExitIncomplete when something could not be looked
/// at. Takes about two seconds. Enters COM on the thread and leaves it; loads the vendors' libraries, of
/// which some stay in the process.
int writeReport(const ReportOptions& options, const ReportWriter::Sink& sink);
