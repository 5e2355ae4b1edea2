#pragma once

#include <string>
#include <vector>

/// What a member function of Core Temp's reader class takes and returns.
enum class CoreTempSignature {
    Constructor,
    Destructor,
    Bool,
    Float,
    FloatAtIndex,
    Count,
    Text,
};

/// One member function; constructor and destructor have no name of their own.
struct CoreTempMethod {
    const char* name;
    CoreTempSignature signature;
};

/// The decorated names under which the library may export the method, the most likely one first. The class's
/// declaration is not published: whether a method is const or virtual, and which integer type it uses, shows
/// in the name only and makes no difference to the call.
std::vector<std::string> coreTempExportNames(const CoreTempMethod& method);
