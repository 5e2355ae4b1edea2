#pragma once

#include "app/version.h"

// The report's texts, with stars where the machine's own values stand, and names in braces for paths of the
// checkout.

/// On a machine with the stand-ins of all vendors.
inline constexpr char kWithEverything[] =
    R"text(Kelvaro report: what Kelvaro finds on this machine, and what it does not

The names of users, of computers, of the domain and of mail accounts are left out. Audio devices stand
here under the names that Windows shows: read the text before you send it.

Program
  Version                     )text" KELVARO_VERSION_TEXT R"text(
  Report                      %USERPROFILE%\Temp\kelvaro-test-*\KelvaroReport.exe
  The report runs elevated    *
  Kelvaro.exe beside it       version )text" KELVARO_VERSION_TEXT R"text(.0
  Kelvaro runs now            no

Windows
  Windows                     *
  Version                     *
  Wine                        *
  ANSI code page              *

Start with Windows
  Run entry                   "%USERPROFILE%\Temp\kelvaro-test-*\Kelvaro.exe" -delay15
  Points at Kelvaro.exe here  yes
  Switch in Task Manager      not there, which is on
  Starts with Windows         yes
  Delay                       15 s
  InstallDir                  %USERPROFILE%\Temp\kelvaro-test-*
  Installed program           %USERPROFILE%\Temp\kelvaro-test-*\Kelvaro.exe
  It is Kelvaro.exe here      yes

Crashes
  Dumps are kept              no: the installer switches that on
  Folder                      *
  Dumps of Kelvaro            0

CPU load
  Processors                  *
  GetSystemTimes              works

Memory
  GlobalMemoryStatusEx        works
  Physical memory             *
  In use                      *

Display adapters
  *

Mail
  Accounts                    2
  Unread in account 1         3
  Unread in account 2         12
  Unread, as Kelvaro counts   15

Gamepad
  Library                     %USERPROFILE%\Temp\kelvaro-test-*\XINPUT1_4.dll
  Version of the library      no version record
  Gamepad 1                   connected
                              battery: NiMH, level: medium
  Gamepad 2                   not connected
  Gamepad 3                   not connected
  Gamepad 4                   not connected
  Battery, as Kelvaro shows   medium

Sound
  Core Audio's library        {audio}
  Version of the library      no version record
  Speakers                    4 active
  Speaker 1                   Speakers (High Definition Audio Device)
  Speaker 2                   Headphones (USB Audio Device)
  Speaker 3                   Monitor (Display Audio)
  Speaker 4                   Kopfhörer № 5 (<user>'s Headset)
  Default speaker             Speakers (High Definition Audio Device)
  Volume left                 40 %
  Volume right                30 %
  Volume master               40 %
  Speaker muted               yes
  Microphones                 1 active
  Microphone 1                Microphone (USB Audio Device)
  Default microphone          Microphone (USB Audio Device)
  Microphone muted            no
  Default device can be set   yes

Core Temp
  Library                     GetCoreTempInfo.dll
  Looked for                  %USERPROFILE%\Temp\kelvaro-test-*\GetCoreTempInfo.dll: there
  Looked for                  C:\windows\system32\GetCoreTempInfo.dll: not there
  Loaded                      %USERPROFILE%\Temp\kelvaro-test-*\GetCoreTempInfo.dll
  Version of the library      no version record
  Entries                     all of 12
  Shared memory, extended     not there
  Shared memory, original     not there
  Read through                the library
  Core Temp answers           yes
  Processor                   Test CPU
  Clock                       3600.00MHz (100.00 x 36.00)
  Voltage                     1.250000 V
  Hottest core                54 °C

NVIDIA
  Library                     nvapi64.dll
  Looked for                  C:\windows\system32\nvapi64.dll: there
  Loaded                      C:\windows\system32\nvapi64.dll
  Version of the library      no version record
  nvapi_QueryInterface        there
  Driver answers              yes
  Start of the driver         works
  List of the cards           works
  Entries                     all of 8
  Call for the name           works
  Call for the load           works
  Call for the temperature    works
  Call for the memory         works
  Call for the clock          works
  Name                        Test GPU
  Load                        30 %
  Temperature                 61 °C
  Video memory in use         25 %
  Core clock                  1350000 kHz

AMD
  Library                     atiadlxx.dll
  Looked for                  %USERPROFILE%\Temp\kelvaro-test-*\atiadlxx.dll: there
  Looked for                  C:\windows\system32\atiadlxx.dll: not there
  Loaded                      %USERPROFILE%\Temp\kelvaro-test-*\atiadlxx.dll
  Version of the library      no version record
  Entries                     all of 7
  Driver answers              yes
  Start of a session          works
  Number of adapters          works
  Adapters                    1
  Call for the name           works
  Call for load and clock     works
  Call for the temperature    works
  Name                        Radeon Test 900
  Load                        42 %
  Temperature                 45 °C
  Video memory in use         0 %
  Core clock                  1200000 kHz

LCD
  Registry key                HKLM\SOFTWARE\Classes\CLSID\{D0E790A5-01A7-49AE-AE0B-E986BDD0C21B}\ServerBinary
  Registered library          {lcd}
  The file                    there, no version record
  Loaded                      {lcd}
  LogiLcdInit                 there (needed)
  LogiLcdIsButtonPressed      there (needed)
  LogiLcdUpdate               there (needed)
  LogiLcdShutdown             there (needed)
  LogiLcdColorSetBackground   there (needed)
  LogiLcdIsConnected          there (for this report only)
  LogiLcdMonoSetBackground    there (not used)
  LogiLcdMonoSetText          there (not used)
  LogiLcdColorSetTitle        there (not used)
  LogiLcdColorSetText         there (not used)
  Start of the library        not tried: only with --lcd

Figures, two samples
  GPU                         Test GPU
  Time                        *
  Sample                      first                         second
  CPU load                    *
  CPU clock                   3600.00MHz (100.00 x 36.00)   3600.00MHz (100.00 x 36.00)
  CPU voltage                 1.250000 V                    1.250000 V
  CPU temperature             54 °C                         54 °C
  GPU load                    30 %                          30 %
  GPU clock                   1350000 kHz                   1350000 kHz
  GPU temperature             61 °C                         61 °C
  Video memory                25 %                          25 %
  Memory                      *
  Volume left                 40 %                          40 %
  Volume right                30 %                          30 %
  Volume master               40 %                          40 %
  Speaker muted               yes                           yes
  Microphone muted            no                            no
  Gamepad battery             medium                        medium

Everything could be looked at.
)text";

/// The end of the section on the LCD, which --lcd changes.
inline constexpr char kStartNotTried[] = R"text(  Start of the library        not tried: only with --lcd
)text";
inline constexpr char kStarted[] = R"text(  LogiLcdInit returned        true
  Colour LCD connected        yes
)text";

/// On a machine with none of them.
inline constexpr char kWithNothing[] =
    R"text(Kelvaro report: what Kelvaro finds on this machine, and what it does not

The names of users, of computers, of the domain and of mail accounts are left out. Audio devices stand
here under the names that Windows shows: read the text before you send it.

Program
  Version                     )text" KELVARO_VERSION_TEXT R"text(
  Report                      %USERPROFILE%\Temp\kelvaro-test-*\KelvaroReport.exe
  The report runs elevated    *
  Kelvaro.exe beside it       not there
  Kelvaro runs now            no

Windows
  Windows                     *
  Version                     *
  Wine                        *
  ANSI code page              *

Start with Windows
  Run entry                   not there
  Switch in Task Manager      not there, which is on
  Starts with Windows         no
  Delay                       0 s
  InstallDir                  not there
  Installed program           not found: the start with Windows cannot be set

Crashes
  Dumps are kept              no: the installer switches that on
  Folder                      *
  Dumps of Kelvaro            0

CPU load
  Processors                  *
  GetSystemTimes              works

Memory
  GlobalMemoryStatusEx        works
  Physical memory             *
  In use                      *

Display adapters
  *

Mail
  Accounts                    no mail program has left a list
  Unread, as Kelvaro counts   not available

Gamepad
  Library                     C:\windows\system32\XINPUT1_4.dll
  Version of the library      version *
  Gamepad 1                   not connected
  Gamepad 2                   not connected
  Gamepad 3                   not connected
  Gamepad 4                   not connected
  Battery, as Kelvaro shows   none

Sound
  Core Audio's library        C:\windows\system32\mmdevapi.dll
  Version of the library      no version record
  Speakers                    0 active
  Default speaker             none
  Microphones                 0 active
  Default microphone          none
  Default device can be set   no, 0x80040154: REGDB_E_CLASSNOTREG

Core Temp
  Library                     GetCoreTempInfo.dll
  Looked for                  %USERPROFILE%\Temp\kelvaro-test-*\GetCoreTempInfo.dll: not there
  Looked for                  C:\windows\system32\GetCoreTempInfo.dll: not there
  Loaded                      no, error 126: Module not found.
  Shared memory, extended     not there
  Shared memory, original     not there
  Read through                the shared memory
  Core Temp answers           no: it does not run, or does not share its figures

NVIDIA
  Library                     nvapi64.dll
  Looked for                  C:\windows\system32\nvapi64.dll: not there
  Loaded                      no, error 126: Module not found.

AMD
  Library                     atiadlxx.dll
  Looked for                  %USERPROFILE%\Temp\kelvaro-test-*\atiadlxx.dll: not there
  Looked for                  C:\windows\system32\atiadlxx.dll: not there
  Loaded                      no, error 126: Module not found.

LCD
  Registry key                HKLM\SOFTWARE\Classes\CLSID\{D0E790A5-01A7-49AE-AE0B-E986BDD0C21B}\ServerBinary
  Registered library          none: the keyboard's LCD software is not installed

Figures, two samples
  GPU                         none
  Time                        *
  Sample                      first                         second
  CPU load                    *
  CPU clock                   -                             -
  CPU voltage                 -                             -
  CPU temperature             -                             -
  GPU load                    -                             -
  GPU clock                   -                             -
  GPU temperature             -                             -
  Video memory                -                             -
  Memory                      *
  Volume left                 0 %                           0 %
  Volume right                0 %                           0 %
  Volume master               0 %                           0 %
  Speaker muted               no                            no
  Microphone muted            no                            no
  Gamepad battery             none                          none

Everything could be looked at.
)text";
