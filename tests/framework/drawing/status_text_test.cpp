#include "framework/drawing/status_text.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <limits>
#include <string>

TEST(StatusText, NamesAndExplainsEveryStatus) {
    const std::array<std::wstring, 21> texts{
        L"Ok: Indicates that the method call was successful.",
        L"GenericError: Indicates that there was an error on the method call, which is identified as "
        L"something other than those defined by the other elements of this enumeration.",
        L"InvalidParameter: Indicates that one of the arguments passed to the method was not valid.",
        L"OutOfMemory: Indicates that the operating system is out of memory and could not allocate memory to "
        L"process the method call.",
        L"ObjectBusy: Indicates that one of the arguments specified in the API call is already in use in "
        L"another thread.",
        L"InsufficientBuffer: Indicates that a buffer specified as an argument in the API call is not large "
        L"enough to hold the data to be received.",
        L"NotImplemented: Indicates that the method is not implemented.",
        L"Win32Error: Indicates that the method generated a Win32 error.",
        L"WrongState: Indicates that the object is in an invalid state to satisfy the API call. For example, "
        L"calling Pen::GetColor from a pen that is not a single, solid color results in a WrongState status.",
        L"Aborted: Indicates that the method was aborted.",
        L"FileNotFound: Indicates that the specified image file or metafile cannot be found.",
        L"ValueOverflow: Indicates that the method performed an arithmetic operation that produced a numeric "
        L"overflow.",
        L"AccessDenied: Indicates that a write operation is not allowed on the specified file.",
        L"UnknownImageFormat: Indicates that the specified image file format is not known.",
        L"FontFamilyNotFound: Indicates that the specified font family cannot be found. Either the font "
        L"family name is incorrect or the font family is not installed.",
        L"FontStyleNotFound: Indicates that the specified style is not available for the specified font "
        L"family.",
        L"NotTrueTypeFont: Indicates that the font retrieved from an HDC or LOGFONT is not a TrueType font "
        L"and cannot be used with GDI+.",
        L"UnsupportedGdiplusVersion: Indicates that the version of GDI+ that is installed on the system is "
        L"incompatible with the version with which the application was compiled.",
        L"GdiplusNotInitialized: Indicates that the GDI+ API is not in an initialized state. To function, "
        L"all GDI+ objects require that GDI+ be in an initialized state. Initialize GDI+ by calling "
        L"GdiplusStartup.",
        L"PropertyNotFound: Indicates that the specified property does not exist in the image.",
        L"PropertyNotSupported: Indicates that the specified property is not supported by the format of the "
        L"image and, therefore, cannot be set.",
    };
    for (std::size_t status = 0; status < texts.size(); ++status) {
        EXPECT_EQ(Panelix::gdiplusStatusText(static_cast<int>(status)), texts[status]);
    }
}

TEST(StatusText, OtherValuesAreUnknown) {
    for (const int status :
         {21, 22, -1, 1000, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_EQ(Panelix::gdiplusStatusText(status),
                  std::wstring(L"Invalid status: Indicates an unknown status was returned."))
            << status;
    }
}
