#pragma once

/// The program from its command line to its exit code: prints the report, the help, or what is wrong with the
/// command line. In a console window of its own, which would close with it, it waits for the Enter key,
/// unless the report was opened in another window. Ends the process itself after a driver's fault, and when a
/// driver's call does not return. Main thread, once per process.
int runReportProgram(int argumentCount, const wchar_t* const* arguments);
