#include "app/report/report_program.h"

int wmain(int argumentCount, wchar_t** arguments) {
    return runReportProgram(argumentCount, arguments);
}
