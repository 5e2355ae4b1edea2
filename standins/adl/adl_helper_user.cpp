#include "standins/adl/adl_helper.h"

/// Keeps the import alive.
void (*adlHelperImport)() noexcept = &adlHelper;
