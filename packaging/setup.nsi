; The installer: per machine, for 64-bit Windows 8 and later. scripts/release_files.sh runs makensis with
;   VERSION  three numbers          FILES  folder with what is installed     SIZE_KB  its size
;   ICON, FINISH_PICTURE  its pictures
;   OUTPUT   the installer's path   LISTS  folder with install.nsh, which extracts these files, and list.txt, a line for
;                                          each of them: NAME|SIZE CHECKSUM, the checksum as a signed number
;   HOME_URL optional: the address where users find help
;   SIGN     optional: a command that signs the file whose path follows it
;
; Switches: /S installs silently, /D=FOLDER (the last one, without quotes) into this folder, /ALLOWDOWNGRADE replaces
; a newer version without asking, /FORCE ends Kelvaro without asking, also on the LCD. Without /D an installation that is
; there is replaced where it is. /AUTOSTART=on and =off say whether Kelvaro starts with Windows, /LOG=FILE writes down what
; is done, /? lists the switches. The uninstaller knows /S, /FORCE and /LOG.
;
; Exit codes of the installer, and of the uninstaller when it is started with _?=FOLDER (without it, a copy of the
; uninstaller does the work and the exit code is lost). Silently, the reason goes to the standard error.
!define EXIT_CANCELLED 1
!define EXIT_NOT_WRITTEN 2
!define EXIT_RUNNING 3
!define EXIT_NEWER_INSTALLED 4
!define EXIT_UNSUITABLE_FOLDER 5
!define EXIT_OLD_WINDOWS 6
!define EXIT_FOREIGN_FOLDER 7
!define EXIT_SETUP_RUNS 8
!define EXIT_BAD_SWITCH 9

Target amd64-unicode
SetCompressor /SOLID lzma
CRCCheck on
; The files' own times, which are that of the commit.
SetDateSave on
RequestExecutionLevel admin
ManifestDPIAware true
ManifestSupportedOS all
Name "Kelvaro"
Caption "Kelvaro ${VERSION} Setup"
BrandingText "Kelvaro ${VERSION}"
OutFile "${OUTPUT}"
ShowInstDetails nevershow
ShowUninstDetails nevershow

VIProductVersion "${VERSION}.0"
VIFileVersion "${VERSION}.0"
VIAddVersionKey /LANG=0 "CompanyName" "The Kelvaro developers"
VIAddVersionKey /LANG=0 "FileDescription" "Kelvaro Setup"
VIAddVersionKey /LANG=0 "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=0 "LegalCopyright" "The Kelvaro developers"
VIAddVersionKey /LANG=0 "ProductName" "Kelvaro"
VIAddVersionKey /LANG=0 "ProductVersion" "${VERSION}"

!ifdef SIGN
    !uninstfinalize '"${SIGN}" "%1"' = 0
!endif

!include LogicLib.nsh
!include FileFunc.nsh
!include TextFunc.nsh
!include WordFunc.nsh
!include WinVer.nsh
!include WinMessages.nsh
!include MUI2.nsh

!define PROGRAM_KEY "Software\Kelvaro"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Kelvaro"
!define RUN_KEY "Software\Microsoft\Windows\CurrentVersion\Run"
; Windows writes down the state of a program that crashed, when it finds this.
!define DUMPS_KEY "SOFTWARE\Microsoft\Windows\Windows Error Reporting\LocalDumps"
!define DUMPS_FOLDER "%LOCALAPPDATA%\CrashDumps"
!define START_MENU "$SMPROGRAMS\Kelvaro"

; What the running program is known by: app/start.cpp, framework/core/preview_window.cpp, command_codes.h.
!define MUTEX "KELVARO_G19"
!define WINDOW_CLASS "PanelixWindow"
!define WINDOW_TITLE "Kelvaro"
!define COMMAND_EXIT 0x8003

; The program reads the folder as text of the ANSI code page and, for the start with Windows, at most 260 bytes of
; "FOLDER\Kelvaro.exe" -delay999 and a terminator.
!define MAX_FOLDER_BYTES 235

; After a start with Windows the keyboard's software needs some seconds before it passes the LCD's keys on.
!define START_DELAY "-delay15"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
; A part of artwork/rendered/105_picture.bmp, 314 pixels high.
!define MUI_WELCOMEFINISHPAGE_BITMAP "${FINISH_PICTURE}"
!define MUI_ABORTWARNING
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE leaveFolderPage
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_TITLE "Kelvaro is installed"
!define FINISH_TEXT "You find it in the Start menu. With the keyboard's software running it appears on the LCD, \
otherwise as an icon in the notification area."
!define MUI_FINISHPAGE_TEXT "${FINISH_TEXT}"
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Start Kelvaro"
!define MUI_FINISHPAGE_RUN_FUNCTION startProgram
; The page's other check box, which is meant for a text to show.
!define MUI_FINISHPAGE_SHOWREADME
!define MUI_FINISHPAGE_SHOWREADME_TEXT "Start Kelvaro with Windows, after 15 seconds"
!define MUI_FINISHPAGE_SHOWREADME_NOTCHECKED
!define MUI_FINISHPAGE_SHOWREADME_FUNCTION doNothing
!define MUI_PAGE_CUSTOMFUNCTION_SHOW showFinishPage
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE leaveFinishPage
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

; What was installed before; both empty when nothing was.
Var oldFolder
Var oldVersion
; The handle of the log, empty when there is none.
Var log
; on, off, or empty: as it is
Var autostart
; Whether Kelvaro is ended without asking, and whether it was ended.
Var force
Var ended
; The exit code of a folder that findFolderFault does not take.
Var folderCode

; By the last part of this Browse makes the chosen folder one of Kelvaro's own. The variable is empty then: without /D=
; the folder begins with a backslash.
InstallDir "$oldFolder\Kelvaro"

; Writes a line into the log.
!macro log TEXT
    ${If} $log != ""
        FileWriteUTF16LE $log "${TEXT}$\r$\n"
    ${EndIf}
!macroend

; What installer and uninstaller have both, the latter with names that begin with "un.".
!macro commonFunctions un

; Says the text on the stack: in a box, or silently to the standard error.
Function ${un}tell
    Exch $1
    !insertmacro log "$1"
    ${If} ${Silent}
        System::Call 'kernel32::AttachConsole(i -1)'
        System::Call 'kernel32::GetStdHandle(i -12) p .r2'
        FileWrite $2 "$1$\r$\n"
    ${Else}
        MessageBox MB_OK|MB_ICONEXCLAMATION "$1"
    ${EndIf}
    Pop $1
FunctionEnd

; Ends with this exit code and says why.
Function ${un}refuse
    Exch $0 ; the exit code
    Exch
    Call ${un}tell ; the reason
    !insertmacro log "Exit code $0"
    SetErrorLevel $0
    Quit
FunctionEnd

; $0: whether Kelvaro runs in this session. The mutex of another account may be one that must not be opened.
Function ${un}isRunning
    System::Call 'kernel32::OpenMutexW(i 0x100000, i 0, w "${MUTEX}") p .r0 ?e'
    Pop $1
    ${If} $0 <> 0
        System::Call 'kernel32::CloseHandle(p r0)'
        StrCpy $0 1
    ${ElseIf} $1 = 2 ; there is none of that name
        StrCpy $0 0
    ${Else}
        StrCpy $0 1
    ${EndIf}
FunctionEnd

; Waits until it is over, for some seconds; whether it is, is the caller's to ask. The mutex goes a little before the
; process does, which has its file open until then; the process of another account may be one that must not be opened.
Function ${un}askToEnd
    FindWindow $2 "${WINDOW_CLASS}" "${WINDOW_TITLE}"
    ${If} $2 = 0
        Return
    ${EndIf}
    System::Call 'user32::GetWindowThreadProcessId(p r2, *i .r3)'
    System::Call 'kernel32::OpenProcess(i 0x100000, i 0, i r3) p .r3'
    ; What Exit in the menu of its icon does: to be closed only hides the window.
    System::Call 'user32::PostMessageW(p r2, i ${WM_COMMAND}, p ${COMMAND_EXIT}, p 0)'
    ${If} $3 <> 0
        System::Call 'kernel32::WaitForSingleObject(p r3, i 10000)'
        System::Call 'kernel32::CloseHandle(p r3)'
        Return
    ${EndIf}
    ${For} $2 1 100
        Call ${un}isRunning
        ${If} $0 = 0
            ${Break}
        ${EndIf}
        Sleep 100
    ${Next}
    Sleep 1000
FunctionEnd

; Ends the processes of this session that run the file $R0: on the LCD the program has no window that could be asked.
Function ${un}endProcesses
    System::Call 'kernel32::GetCurrentProcessId() i .r1'
    System::Call 'kernel32::ProcessIdToSessionId(i r1, *i .R1)'
    System::Alloc 568 ; a PROCESSENTRY32W
    Pop $R2
    System::Call '*$R2(i 568)'
    System::Call 'kernel32::CreateToolhelp32Snapshot(i 2, i 0) p .R3'
    System::Call 'kernel32::Process32FirstW(p R3, p R2) i .R4'
    ${DoWhile} $R4 <> 0
        System::Call '*$R2(i, i, i .R5, &v32, &w260 .R6)'
        System::Call 'kernel32::ProcessIdToSessionId(i R5, *i .R7)'
        ${If} $R6 == "Kelvaro.exe"
        ${AndIf} $R7 = $R1
            ; To end it, to wait for it and to ask for its file.
            System::Call 'kernel32::OpenProcess(i 0x101001, i 0, i R5) p .R8'
            StrCpy $0 ""
            System::Call 'kernel32::QueryFullProcessImageNameW(p R8, i 0, w .r0, *i ${NSIS_MAX_STRLEN})'
            StrCpy $1 $R0
            Call ${un}isSameFolder
            ${If} $0 = 1
                System::Call 'kernel32::TerminateProcess(p R8, i 0)'
                System::Call 'kernel32::WaitForSingleObject(p R8, i 10000)'
            ${EndIf}
            System::Call 'kernel32::CloseHandle(p R8)'
        ${EndIf}
        System::Call 'kernel32::Process32NextW(p R3, p R2) i .R4'
    ${Loop}
    System::Call 'kernel32::CloseHandle(p R3)'
    System::Free $R2
FunctionEnd

; Goes on when Kelvaro runs no longer. $ended becomes 1 when it did, and was ended.
Function ${un}endRunning
    Call ${un}isRunning
    ${If} $0 = 0
        Return
    ${EndIf}
    ${If} $force = 0
        MessageBox MB_OKCANCEL|MB_ICONEXCLAMATION "Kelvaro is running and must be ended first. End it now?" /SD IDOK \
IDOK end
        SetErrorLevel ${EXIT_CANCELLED}
        Quit
    ${EndIf}
end:
    StrCpy $ended 1
    !insertmacro log "Ending the running Kelvaro"
    Call ${un}askToEnd
    Call ${un}isRunning
    ${If} $0 = 0
        Return
    ${EndIf}
    ${If} ${Silent}
    ${AndIf} $force = 0
        Push "Kelvaro is running on the keyboard's LCD. End it there first: Exit Applet on its options page. Or let \
/FORCE end it."
        Push ${EXIT_RUNNING}
        Call ${un}refuse
    ${EndIf}
    StrCpy $R0 "$INSTDIR\Kelvaro.exe"
    Call ${un}endProcesses
    ${If} $oldFolder != ""
        StrCpy $R0 "$oldFolder\Kelvaro.exe"
        Call ${un}endProcesses
    ${EndIf}
    Call ${un}isRunning
    ${If} $0 <> 0
        Push "Kelvaro is still running, from another folder than the installed one. Please end it first."
        Push ${EXIT_RUNNING}
        Call ${un}refuse
    ${EndIf}
FunctionEnd

; Two at a time would be in each other's way. The mutex goes with the process.
Function ${un}refuseSecond
    System::Call 'kernel32::CreateMutexW(p 0, i 0, w "Global\KelvaroSetup") p .r0 ?e'
    Pop $1
    ${If} $1 = 183 ; there is one
    ${OrIf} $1 = 5 ; of another user
        Push "Another Kelvaro Setup is running, or Kelvaro is being uninstalled. Please wait for its end."
        Push ${EXIT_SETUP_RUNS}
        Call ${un}refuse
    ${EndIf}
FunctionEnd

; Sets $force, $autostart and $log from the command line.
Function ${un}readSwitches
    ${GetParameters} $1
    ClearErrors
    ${GetOptions} $1 "/FORCE" $2
    StrCpy $force 1
    ${If} ${Errors}
        StrCpy $force 0
    ${EndIf}
    ${GetOptions} $1 "/AUTOSTART=" $autostart
    ${If} $autostart != ""
    ${AndIf} $autostart != "on"
    ${AndIf} $autostart != "off"
        Push "/AUTOSTART= wants on or off, and not '$autostart'."
        Push ${EXIT_BAD_SWITCH}
        Call ${un}refuse
    ${EndIf}
    ${GetOptions} $1 "/LOG=" $3
    ${If} $3 != ""
        ClearErrors
        FileOpen $log $3 w
        ${If} ${Errors}
            StrCpy $log ""
            Push "The log '$3' cannot be written."
            Push ${EXIT_BAD_SWITCH}
            Call ${un}refuse
        ${EndIf}
        ${GetTime} "" "L" $R0 $R1 $R2 $R3 $R4 $R5 $R6
        FileWriteUTF16LE /BOM $log "$R2-$R1-$R0 $R4:$R5:$R6 Kelvaro ${VERSION}, $EXEPATH $1$\r$\n"
    ${EndIf}
FunctionEnd

; $2: the command of this user's start entry behind `"FOLDER\`, empty when it does not begin with that. FOLDER is $0.
Function ${un}runEntryIn
    ReadRegStr $1 HKCU "${RUN_KEY}" "Kelvaro"
    StrLen $3 '"$0\'
    StrCpy $4 $1 $3
    StrCpy $2 ""
    ${If} $4 == '"$0\'
        StrCpy $2 $1 "" $3
    ${EndIf}
FunctionEnd

; $1: the volume and the number there of the folder $0, whatever name leads to it; empty when there is none.
Function ${un}identify
    StrCpy $1 ""
    System::Call 'kernel32::CreateFileW(w r0, i 0, i 7, p 0, i 3, i 0x02000000, p 0) p .r2'
    ${If} $2 = -1
        Return
    ${EndIf}
    System::Call '*(&v52) p .r3' ; BY_HANDLE_FILE_INFORMATION
    System::Call 'kernel32::GetFileInformationByHandle(p r2, p r3) i .r4'
    ${If} $4 <> 0
        System::Call '*$3(&v28, i .r4, &v12, i .r5, i .r6)'
        StrCpy $1 "$4 $5 $6"
    ${EndIf}
    System::Free $3
    System::Call 'kernel32::CloseHandle(p r2)'
FunctionEnd

; $0: 1 when the names $0 and $1 lead to the same folder: a link, a short name and a drive of "subst" are other names.
Function ${un}isSameFolder
    Push $1
    Call ${un}identify
    Pop $0
    Push $1
    Call ${un}identify
    Pop $0
    ${If} $0 == ""
    ${OrIf} $0 != $1
        StrCpy $0 0
    ${Else}
        StrCpy $0 1
    ${EndIf}
FunctionEnd

; Leaves $INSTDIR without a backslash at its end.
Function ${un}stripFolder
    StrCpy $1 $INSTDIR 1 -1
    ${While} $1 == "\"
        StrCpy $INSTDIR $INSTDIR -1
        StrCpy $1 $INSTDIR 1 -1
    ${EndWhile}
FunctionEnd

; $1: size and CRC-32 of the file $0, as in the lists; empty when it cannot be read. Uses $2 to $5.
Function ${un}fingerprint
    StrCpy $1 ""
    System::Call 'kernel32::CreateFileW(w r0, i 0x80000000, i 7, p 0, i 3, i 0, p 0) p .r2'
    ${If} $2 = -1
        Return
    ${EndIf}
    System::Call 'kernel32::GetFileSizeEx(p r2, *l .r3)'
    System::Call 'kernel32::CreateFileMappingW(p r2, p 0, i 2, i 0, i 0, p 0) p .r4'
    System::Call 'kernel32::MapViewOfFile(p r4, i 4, i 0, i 0, p 0) p .r5'
    ${If} $5 != 0
        System::Call 'ntdll::RtlComputeCrc32(i 0, p r5, i r3) i .r1'
        StrCpy $1 "$3 $1"
        System::Call 'kernel32::UnmapViewOfFile(p r5)'
    ${EndIf}
    System::Call 'kernel32::CloseHandle(p r4)'
    System::Call 'kernel32::CloseHandle(p r2)'
FunctionEnd

; Calls the function at $R9 for each line of the list $R8, with a file's name in $R0 and its size and checksum in $R1;
; "*" when these are not known. The function keeps $R7 to $R9.
Function ${un}eachFile
    FileOpen $R7 $R8 r
    FileRead $R7 $R2
    ${DoWhile} $R2 != ""
        ${WordFind} $R2 "|" "+1" $R0
        ${WordFind} $R2 "|" "+2" $R1
        ${TrimNewLines} $R1 $R1
        Call $R9
        FileRead $R7 $R2
    ${Loop}
    FileClose $R7
FunctionEnd

; For eachFile: deletes the file in the folder $R3 if it is the one that was installed; $R4: 1 when it is still there.
Function ${un}removeOwn
    StrCpy $0 "$R3\$R0"
    Call ${un}fingerprint
    ${If} $1 == ""
        Return
    ${EndIf}
    ${If} $R1 == "*"
    ${OrIf} $1 == $R1
        Delete $0
        ${If} ${FileExists} $0
            StrCpy $R4 1
        ${EndIf}
    ${EndIf}
FunctionEnd

; For eachFile: $R4 becomes the path of a file in the folder $R3 that is in use, or cannot be written to.
Function ${un}checkFile
    ${If} $R4 != ""
        Return
    ${EndIf}
    ; To read, write and delete, with nobody else: a program that runs does not allow this.
    System::Call 'kernel32::CreateFileW(w "$R3\$R0", i 0xC0010000, i 0, p 0, i 3, i 0, p 0) p .r2 ?e'
    Pop $1
    ${If} $2 <> -1
        System::Call 'kernel32::CloseHandle(p r2)'
    ${ElseIf} $1 <> 2 ; there is none, or no folder
    ${AndIf} $1 <> 3
        StrCpy $R4 "$R3\$R0"
        SetFileAttributes $R4 NORMAL
    ${EndIf}
FunctionEnd

; Goes on when all files of the list $R8 in the folder $R3 can be replaced; until then nothing is touched. A program that
; has just ended has its file open for a moment longer.
Function ${un}checkFiles
    StrCpy $R5 20
retry:
    StrCpy $R4 ""
    GetFunctionAddress $R9 ${un}checkFile
    Call ${un}eachFile
    ${If} $R4 == ""
        Return
    ${EndIf}
    ${If} $R5 > 0
        IntOp $R5 $R5 - 1
        Sleep 100
        Goto retry
    ${EndIf}
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$R4 is in use. End that program, perhaps of another user who is logged \
on, and press Retry." /SD IDCANCEL IDRETRY retry
    Push "$R4 is in use, perhaps by another user who is logged on. End that program first."
    Push ${EXIT_RUNNING}
    Call ${un}refuse
FunctionEnd

; Deletes from the folder $R3 what was installed by the list $R8, and the folder when nothing else is in it; $R4: 1 when
; something of it is still there. The file of a program that has just ended can be in use, or be there, for a moment
; longer.
Function ${un}removeFiles
    ${For} $R5 1 50
        StrCpy $R4 0
        GetFunctionAddress $R9 ${un}removeOwn
        Call ${un}eachFile
        RMDir "$R3"
        ${DirState} "$R3" $1
        ${If} $R4 = 0
        ${AndIf} $1 <> 0 ; not empty, or gone
            Return
        ${EndIf}
        Sleep 100
    ${Next}
FunctionEnd

!macroend

!insertmacro commonFunctions ""
!insertmacro commonFunctions "un."

Function .onInit
    SetRegView 64
    SetShellVarContext all
    ${IfNot} ${AtLeastWin8}
        Push "Kelvaro needs Windows 8 or later."
        Push ${EXIT_OLD_WINDOWS}
        Call refuse
    ${EndIf}
    ReadRegStr $oldFolder HKLM "${UNINSTALL_KEY}" "InstallLocation"
    ReadRegStr $oldVersion HKLM "${UNINSTALL_KEY}" "DisplayVersion"
    Call listSwitches
    Call readSwitches
    Call refuseSecond
    InitPluginsDir
    File "/oname=$PLUGINSDIR\new.txt" "${LISTS}/list.txt"
    Call listOldFiles
    StrCpy $0 $INSTDIR 1
    ${If} $0 == "\" ; without /D=
        StrCpy $INSTDIR ""
    ${EndIf}
    Call refuseLostFolder
    ${If} $INSTDIR == ""
        StrCpy $INSTDIR $oldFolder
    ${EndIf}
    ${If} $INSTDIR == ""
        StrCpy $INSTDIR "$PROGRAMFILES64\Kelvaro"
    ${EndIf}
    Call checkVersion
    ${If} ${Silent}
        Call findFolderFault
        ${If} $0 != ""
            Push $0
            Push $folderCode
            Call refuse
        ${EndIf}
    ${EndIf}
FunctionEnd

; With /? only says what the switches are.
Function listSwitches
    ${GetParameters} $1
    ClearErrors
    ${GetOptions} $1 "/?" $2
    ${If} ${Errors}
        Return
    ${EndIf}
    Push "Kelvaro ${VERSION} Setup$\r$\n$\r$\n\
/S - asks nothing and shows nothing$\r$\n\
/FORCE - ends Kelvaro without asking, also on the LCD$\r$\n\
/AUTOSTART=on or =off - whether Kelvaro starts with Windows; otherwise that stays as it is$\r$\n\
/ALLOWDOWNGRADE - replaces a newer version without asking$\r$\n\
/LOG=FILE - writes down what is done$\r$\n\
/D=FOLDER - installs there; the last switch, without quotes"
    Call tell
    SetErrorLevel 0
    Quit
FunctionEnd

; Writes the list of what was installed before. The first version kept none.
Function listOldFiles
    FileOpen $1 "$PLUGINSDIR\old.txt" w
    EnumRegValue $2 HKLM "${UNINSTALL_KEY}\Files" 0
    ${If} $2 == ""
    ${AndIf} $oldFolder != ""
        FileWrite $1 "Kelvaro.exe|*$\nKelvaroReport.exe|*$\nREADME.txt|*$\nCHANGELOG.txt|*$\nUninstall.exe|*$\n"
    ${EndIf}
    StrCpy $0 0
    ${DoWhile} $2 != ""
        ReadRegStr $3 HKLM "${UNINSTALL_KEY}\Files" $2
        FileWrite $1 "$2|$3$\n"
        IntOp $0 $0 + 1
        EnumRegValue $2 HKLM "${UNINSTALL_KEY}\Files" $0
    ${Loop}
    FileClose $1
FunctionEnd

Function un.onInit
    SetRegView 64
    SetShellVarContext all
    Call un.readSwitches
    Call un.refuseSecond
    InitPluginsDir
    File "/oname=$PLUGINSDIR\new.txt" "${LISTS}/list.txt"
    Call un.stripFolder
FunctionEnd

; A folder behind /D= that NSIS does not take, a whole drive or one in quotes, is not to become another one in silence.
Function refuseLostFolder
    ${IfNot} ${Silent}
    ${OrIf} $INSTDIR != ""
        Return
    ${EndIf}
    System::Call 'kernel32::GetCommandLineW() w .r0'
    ClearErrors
    ${WordFind} $0 "/D=" "E+1}" $1
    ${IfNot} ${Errors}
        Push "Kelvaro cannot be installed into this folder: $1. It needs one of its own, named without quotes."
        Push ${EXIT_UNSUITABLE_FOLDER}
        Call refuse
    ${EndIf}
FunctionEnd

Function checkVersion
    ${VersionCompare} "$oldVersion" "${VERSION}" $0
    ${GetParameters} $1
    ClearErrors
    ${GetOptions} $1 "/ALLOWDOWNGRADE" $2
    ${If} $0 <> 1
    ${OrIfNot} ${Errors}
        Return
    ${EndIf}
    ${If} ${Silent}
        Push "A newer version, $oldVersion, is installed; /ALLOWDOWNGRADE replaces it."
        Push ${EXIT_NEWER_INSTALLED}
        Call refuse
    ${EndIf}
    MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "A newer version of Kelvaro, $oldVersion, is installed. Replace it \
by ${VERSION}?" IDYES replace
    SetErrorLevel ${EXIT_CANCELLED}
    Quit
replace:
FunctionEnd

; Makes $INSTDIR a whole path without a backslash at its end; $0: why the program cannot be installed there, or empty.
Function findFolderFault
    StrCpy $1 $INSTDIR
    System::Call 'kernel32::GetFullPathNameW(w r1, i ${NSIS_MAX_STRLEN}, w .r0, p 0)'
    StrCpy $INSTDIR $0
    Call stripFolder
    StrCpy $folderCode ${EXIT_UNSUITABLE_FOLDER}
    StrLen $2 $INSTDIR
    ${If} $2 < 4
        StrCpy $0 "Kelvaro needs a folder of its own and cannot be installed into '$INSTDIR'."
        Return
    ${EndIf}
    StrCpy $1 $INSTDIR
    ; From and to the ANSI code page, as the path goes to the program and to the system.
    System::Call 'kernel32::lstrcpyA(m .r2, m r1)'
    System::Call 'kernel32::lstrlenA(m r1) i .r3'
    StrCpy $0 ""
    ${If} $2 S!= $1
        StrCpy $0 "The folder's name has characters that Windows' ANSI code page, which Kelvaro uses, does not have. \
Please choose another folder: '$INSTDIR'"
    ${ElseIf} $3 > ${MAX_FOLDER_BYTES}
        StrCpy $0 "The folder's path is too long. Please choose another folder: '$INSTDIR'"
    ${Else}
        StrCpy $folderCode ${EXIT_FOREIGN_FOLDER}
        Call findForeignFile
    ${EndIf}
FunctionEnd

; $0: why the folder $INSTDIR belongs to others, or empty.
Function findForeignFile
    StrCpy $R0 $INSTDIR
    ${While} $R0 != ""
        StrCpy $0 $R0
        StrCpy $1 $WINDIR
        Call isSameFolder
        ${If} $0 = 1
            StrCpy $0 "'$INSTDIR' belongs to Windows. Please choose another folder."
            Return
        ${EndIf}
        ${GetParent} $R0 $R0
    ${EndWhile}
    StrCpy $0 $INSTDIR
    StrCpy $1 $oldFolder
    Call isSameFolder
    ${If} $0 = 1
        StrCpy $0 ""
        Return
    ${EndIf}
    FindFirst $R3 $R4 "$INSTDIR\*"
    ${DoWhile} $R4 != ""
        Call isOwnFile
        ${If} $R6 = 0
            FindClose $R3
            StrCpy $0 "'$INSTDIR' is not empty: it has '$R4', which is not Kelvaro's. Please choose another folder, or \
an empty one."
            Return
        ${EndIf}
        FindNext $R3 $R4
    ${Loop}
    FindClose $R3
    StrCpy $0 ""
FunctionEnd

; $R6: 1 when $R4 may lie in $INSTDIR although nothing is registered there. An installation that was cut short leaves
; some of the files; Core Temp's library is put there by the user, and stays when Kelvaro is uninstalled.
Function isOwnFile
    StrCpy $R6 1
    ${If} $R4 != "."
    ${AndIf} $R4 != ".."
    ${AndIf} $R4 != "Kelvaro.new"
    ${AndIf} $R4 != "Kelvaro.old"
    ${AndIf} $R4 != "GetCoreTempInfo.dll"
        StrCpy $R6 0
        StrCpy $0 "$INSTDIR\$R4"
        Call fingerprint
        StrCpy $R5 $1
        StrCpy $R8 "$PLUGINSDIR\new.txt"
        GetFunctionAddress $R9 compareOwn
        Call eachFile
    ${EndIf}
FunctionEnd

; For eachFile: $R6 becomes 1 for the file with the name $R4 and with size and checksum $R5.
Function compareOwn
    ${If} $R0 == $R4
    ${AndIf} $R1 == $R5
        StrCpy $R6 1
    ${EndIf}
FunctionEnd

; What is installed is first complete in $INSTDIR\Kelvaro.new; then what is there goes to Kelvaro.old and the new files
; take its place, all on one drive. Until the end everything can be undone.

; Extracts the files.
Function extractFiles
    Call restoreFiles ; after an installation that was cut short
    Call removeNew
    ClearErrors
    SetOverwrite try
    SetOutPath "$INSTDIR\Kelvaro.new"
    !include "${LISTS}/install.nsh"
    WriteUninstaller "$INSTDIR\Kelvaro.new\Uninstall.exe"
    StrCpy $R6 0
    ${If} ${Errors}
        StrCpy $R6 1
    ${EndIf}
    ; The folder in which the installer works cannot be removed.
    SetOutPath $PLUGINSDIR
    ${If} $R6 = 1
        Call refuseUnwritten
    ${EndIf}
FunctionEnd

Function removeNew
    Delete "$INSTDIR\Kelvaro.new\*"
    RMDir "$INSTDIR\Kelvaro.new"
FunctionEnd

; For eachFile: puts a file aside; $R4 becomes 1 when that cannot be done. So do the two below.
Function putAside
    ${If} ${FileExists} "$INSTDIR\$R0"
        ClearErrors
        Rename "$INSTDIR\$R0" "$INSTDIR\Kelvaro.old\$R0"
        ${If} ${Errors}
            StrCpy $R4 1
        ${EndIf}
    ${EndIf}
FunctionEnd

Function putInPlace
    ClearErrors
    Rename "$INSTDIR\Kelvaro.new\$R0" "$INSTDIR\$R0"
    ${If} ${Errors}
        StrCpy $R4 1
    ${EndIf}
FunctionEnd

; Removes again what putInPlace has put there.
Function takeAway
    ${IfNot} ${FileExists} "$INSTDIR\Kelvaro.new\$R0"
        Delete "$INSTDIR\$R0"
    ${EndIf}
FunctionEnd

; Calls the function at $R9 for each file that is installed.
Function eachNewFile
    StrCpy $R8 "$PLUGINSDIR\new.txt"
    Call eachFile
    StrCpy $R0 "Uninstall.exe"
    Call $R9
FunctionEnd

Function swapFiles
    CreateDirectory "$INSTDIR\Kelvaro.old"
    StrCpy $R4 0
    GetFunctionAddress $R9 putAside
    Call eachNewFile
    ; What this version has no longer.
    StrCpy $0 $INSTDIR
    StrCpy $1 $oldFolder
    Call isSameFolder
    ${If} $0 = 1
        StrCpy $R8 "$PLUGINSDIR\old.txt"
        Call eachFile
    ${EndIf}
    ${If} $R4 = 0
        GetFunctionAddress $R9 putInPlace
        Call eachNewFile
    ${EndIf}
    ${If} $R4 <> 0
        Call undoSwap
        Call refuseUnwritten
    ${EndIf}
FunctionEnd

Function undoSwap
    GetFunctionAddress $R9 takeAway
    Call eachNewFile
    Call restoreFiles
FunctionEnd

; Puts back what was put aside.
Function restoreFiles
    FindFirst $R3 $R4 "$INSTDIR\Kelvaro.old\*"
    ${DoWhile} $R4 != ""
        ${IfNot} ${FileExists} "$INSTDIR\Kelvaro.old\$R4\*"
            Delete "$INSTDIR\$R4"
            Rename "$INSTDIR\Kelvaro.old\$R4" "$INSTDIR\$R4"
        ${EndIf}
        FindNext $R3 $R4
    ${Loop}
    FindClose $R3
    RMDir "$INSTDIR\Kelvaro.old"
FunctionEnd

Function refuseUnwritten
    Call removeNew
    RMDir "$INSTDIR"
    Push "Not everything could be written into '$INSTDIR' and the registry. What was installed before is as it was."
    Push ${EXIT_NOT_WRITTEN}
    Call refuse
FunctionEnd

; After the end of the swap: deletes what was put aside. A file that is not the installed one is the user's and stays,
; under its name with a number.
Function dropOldFiles
    RMDir "$INSTDIR\Kelvaro.new"
    StrCpy $R3 "$INSTDIR\Kelvaro.old"
    StrCpy $R8 "$PLUGINSDIR\old.txt"
    Call removeFiles
    StrCpy $R8 "$PLUGINSDIR\new.txt"
    Call removeFiles
    FindFirst $R3 $R4 "$INSTDIR\Kelvaro.old\*"
    ${DoWhile} $R4 != ""
        ${IfNot} ${FileExists} "$INSTDIR\Kelvaro.old\$R4\*"
            StrCpy $0 1
            ${While} ${FileExists} "$INSTDIR\$R4.$0"
                IntOp $0 $0 + 1
            ${EndWhile}
            Rename "$INSTDIR\Kelvaro.old\$R4" "$INSTDIR\$R4.$0"
        ${EndIf}
        FindNext $R3 $R4
    ${Loop}
    FindClose $R3
    RMDir "$INSTDIR\Kelvaro.old"
FunctionEnd

; The disk is full, say, in the middle of a file.
Function .onInstFailed
    Call removeNew
    RMDir "$INSTDIR"
    SetErrorLevel ${EXIT_NOT_WRITTEN}
FunctionEnd

; For eachFile: notes in the registry what is installed.
Function keepInList
    WriteRegStr HKLM "${UNINSTALL_KEY}\Files" $R0 $R1
FunctionEnd

Function leaveFolderPage
    Call findFolderFault
    ${If} $0 != ""
        MessageBox MB_OK|MB_ICONEXCLAMATION "$0"
        Abort
    ${EndIf}
FunctionEnd

; Asks an object of the shell for the next one by the method number INDEX; goes to `done` when it has none.
!macro fromShell CALL
    System::Call '${CALL} i .r9'
    ${If} $9 != 0
        Goto done
    ${EndIf}
!macroend

; Starts the program. Not by the installer itself, which runs as administrator, perhaps as another user: the window of
; the desktop leads to the shell of the user who is logged on, and that starts it with that user's rights. $0: 1 when it
; was started. The shell's objects go with the installer.
Function runByShell
    StrCpy $0 0
    System::Alloc 96 ; four VARIANTs: a number, 0; nothing; the number 1; a text
    Pop $2
    IntPtrOp $3 $2 + 24
    IntPtrOp $4 $2 + 48
    System::Call '*$2(&i2 3)'
    System::Call '*$4(&i2 3, &v6, i 1)'
    ; ShellWindows, its FindWindowSW for the desktop, IServiceProvider, QueryService for the IShellBrowser
    !insertmacro fromShell 'ole32::CoCreateInstance(g "{9BA05972-F6A8-11CF-A442-00A0C90A8F39}", p 0, i 4, \
g "{85CB6900-4D95-11CF-960C-0080C7F4EE85}", *p .r5)'
    !insertmacro fromShell '$5->15(p r2, p r3, i 8, *i .r8, i 1, *p .r6)'
    !insertmacro fromShell '$6->0(g "{6D5140C1-7436-11CE-8034-00AA006009FA}", *p .r5)'
    !insertmacro fromShell '$5->3(g "{4C96BE40-915C-11CF-99D3-00AA004AE837}", \
g "{000214E2-0000-0000-C000-000000000046}", *p .r6)'
    ; QueryActiveShellView, its background's IShellFolderViewDual, get_Application, IShellDispatch2
    !insertmacro fromShell '$6->15(*p .r5)'
    !insertmacro fromShell '$5->15(i 0, g "{00020400-0000-0000-C000-000000000046}", *p .r6)'
    !insertmacro fromShell '$6->0(g "{E7A1AF80-4D96-11CF-960C-0080C7F4EE85}", *p .r5)'
    !insertmacro fromShell '$5->7(*p .r6)'
    !insertmacro fromShell '$6->0(g "{A4C6892C-3BA9-11D2-9DEA-00C04FB16162}", *p .r5)'
    System::Call 'oleaut32::SysAllocString(w "$INSTDIR\Kelvaro.exe") p .r6'
    !insertmacro fromShell '$5->31(p r6, p r3, p r3, p r3, p r4)' ; ShellExecute
    StrCpy $0 1
done:
FunctionEnd

; The shell may be busy, or about to start again, for some seconds.
Function startProgram
    ${For} $R0 1 10
        Call runByShell
        ${If} $0 = 1
            Return
        ${EndIf}
        Sleep 500
    ${Next}
    Push "Kelvaro could not be started as the user who is logged on (error $9). Please start it from the Start menu."
    Call tell
FunctionEnd

; $0: 1 when the installer runs as the user who is logged on: only that user's start entry matters.
Function isSessionUser
    System::Call 'wtsapi32::WTSQuerySessionInformationW(p 0, i -1, i 7, *p .r1, *i) i .r2' ; the domain
    System::Call 'wtsapi32::WTSQuerySessionInformationW(p 0, i -1, i 5, *p .r3, *i) i .r4' ; the name
    StrCpy $0 0
    ${If} $2 <> 0
    ${AndIf} $4 <> 0
        System::Call 'kernel32::lstrcpynW(w .r5, p r1, i 256)'
        System::Call 'kernel32::lstrcpynW(w .r6, p r3, i 256)'
        System::Call 'secur32::GetUserNameExW(i 2, w .r7, *i ${NSIS_MAX_STRLEN})'
        ${If} $7 == "$5\$6"
            StrCpy $0 1
        ${EndIf}
    ${EndIf}
FunctionEnd

; Sets this user's start entry as $autostart says. One that starts this Kelvaro already is kept with its delay.
Function setAutostart
    ${If} $autostart == ""
        Return
    ${EndIf}
    Call isSessionUser
    ${If} $0 = 0
        Push "Setup runs as another user than the one who is logged on. Please set the start with Windows in Kelvaro's \
own settings."
        Call tell
        Return
    ${EndIf}
    StrCpy $0 $INSTDIR
    Call runEntryIn
    ${If} $autostart == "off"
        ${If} $2 != ""
            DeleteRegValue HKCU "${RUN_KEY}" "Kelvaro"
        ${EndIf}
    ${ElseIf} $2 == ""
        WriteRegStr HKCU "${RUN_KEY}" "Kelvaro" '"$INSTDIR\Kelvaro.exe" ${START_DELAY}'
    ${EndIf}
    !insertmacro log "Start with Windows: $autostart"
FunctionEnd

Function doNothing
FunctionEnd

Function showFinishPage
    Call isSessionUser
    ${If} $0 = 0
        ShowWindow $mui.FinishPage.ShowReadme ${SW_HIDE}
        SendMessage $mui.FinishPage.Text ${WM_SETTEXT} 0 "STR:${FINISH_TEXT} To start it with Windows, use its \
settings: Setup runs as another user than the one who is logged on."
        Return
    ${EndIf}
    StrCpy $0 $INSTDIR
    Call runEntryIn
    ${If} $2 != ""
        SendMessage $mui.FinishPage.ShowReadme ${BM_SETCHECK} ${BST_CHECKED} 0
    ${EndIf}
FunctionEnd

Function leaveFinishPage
    SendMessage $mui.FinishPage.ShowReadme ${BM_GETCHECK} 0 0 $0
    StrCpy $autostart "off"
    ${If} $0 = ${BST_CHECKED}
        StrCpy $autostart "on"
    ${EndIf}
    System::Call 'user32::IsWindowVisible(p $mui.FinishPage.ShowReadme) i .r0'
    ${If} $0 <> 0
        Call setAutostart
    ${EndIf}
FunctionEnd

; Of an installation in another folder only its start entry stays; it is made to start what is installed now.
Function leaveOldFolder
    ${If} $oldFolder == ""
    ${OrIf} $oldFolder == $INSTDIR
        Return
    ${EndIf}
    StrCpy $0 $oldFolder
    Call runEntryIn
    ${If} $2 != ""
        WriteRegStr HKCU "${RUN_KEY}" "Kelvaro" '"$INSTDIR\$2'
    ${EndIf}
    StrCpy $1 $INSTDIR
    Call isSameFolder
    ${If} $0 = 0
        StrCpy $R3 $oldFolder
        StrCpy $R8 "$PLUGINSDIR\old.txt"
        Call removeFiles
        ${If} $R4 <> 0
            Push "Kelvaro is installed, but not everything could be removed from '$oldFolder'."
            Push ${EXIT_NOT_WRITTEN}
            Call refuse
        ${EndIf}
    ${EndIf}
FunctionEnd

Section
    Call endRunning
    StrCpy $R3 $INSTDIR
    StrCpy $R8 "$PLUGINSDIR\new.txt"
    Call checkFiles
    ${If} $oldFolder != ""
        StrCpy $R3 $oldFolder
        StrCpy $R8 "$PLUGINSDIR\old.txt"
        Call checkFiles
    ${EndIf}
    !insertmacro log "Folder $INSTDIR; before: $oldVersion in '$oldFolder'"
    Call extractFiles
    !insertmacro log "Files extracted"
    Call swapFiles
    !insertmacro log "Files replaced"

    ; Of a version that had an address.
    DeleteRegValue HKLM "${UNINSTALL_KEY}" "HelpLink"
    DeleteRegValue HKLM "${UNINSTALL_KEY}" "URLInfoAbout"
    ; The version comes last.
    ClearErrors
    WriteRegStr HKLM "${PROGRAM_KEY}" "InstallDir" "$INSTDIR"
    CreateDirectory "${START_MENU}"
    ; What the links start works in the user's own folder: there a file can be written, and no window that is open keeps
    ; the program's folder from being removed.
    StrCpy $OUTDIR "%USERPROFILE%"
    CreateShortcut "${START_MENU}\Kelvaro.lnk" "$INSTDIR\Kelvaro.exe" "" "" "" "" "" "System monitor on the keyboard's LCD"
    ; The text is saved in Documents and opened.
    !if /FileExists "${FILES}/KelvaroReport.exe"
        CreateShortcut "${START_MENU}\Kelvaro report.lnk" "$INSTDIR\KelvaroReport.exe" "--save" "" "" "" "" \
            "What Kelvaro finds on this computer"
    !endif
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "Kelvaro"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "The Kelvaro developers"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\Kelvaro.exe"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\Uninstall.exe"'
    WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\Uninstall.exe" /S'
    !ifdef HOME_URL
        WriteRegStr HKLM "${UNINSTALL_KEY}" "HelpLink" "${HOME_URL}"
        WriteRegStr HKLM "${UNINSTALL_KEY}" "URLInfoAbout" "${HOME_URL}"
    !endif
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" ${SIZE_KB}
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    ${If} ${Errors}
        Call undoSwap
        Call refuseUnwritten
    ${EndIf}
    DeleteRegKey HKLM "${UNINSTALL_KEY}\Files"
    StrCpy $R8 "$PLUGINSDIR\new.txt"
    GetFunctionAddress $R9 keepInList
    Call eachFile
    StrCpy $0 "$INSTDIR\Uninstall.exe"
    Call fingerprint
    WriteRegStr HKLM "${UNINSTALL_KEY}\Files" "Uninstall.exe" $1
    Call dropOldFiles
    ; Small dumps, at most three, unless an administrator has set something else.
    EnumRegValue $0 HKLM "${DUMPS_KEY}\Kelvaro.exe" 0
    ${If} $0 == ""
        WriteRegExpandStr HKLM "${DUMPS_KEY}\Kelvaro.exe" "DumpFolder" "${DUMPS_FOLDER}"
        WriteRegDWORD HKLM "${DUMPS_KEY}\Kelvaro.exe" "DumpCount" 3
        WriteRegDWORD HKLM "${DUMPS_KEY}\Kelvaro.exe" "DumpType" 1
    ${EndIf}
    !insertmacro log "Registered"
    Call leaveOldFolder
    Call setAutostart
    ; With a last page that asks, the answer starts it.
    ${If} $ended = 1
    ${AndIf} ${Silent}
        Call startProgram
    ${EndIf}
    !insertmacro log "Exit code 0"
SectionEnd

; Removes this user's start entry of the folder $0.
Function un.removeRunEntry
    Call un.runEntryIn
    ${If} $2 != ""
        DeleteRegValue HKCU "${RUN_KEY}" "Kelvaro"
    ${EndIf}
FunctionEnd

; Removes the key $0 when it has neither subkeys nor values.
Function un.removeEmptyKey
    EnumRegKey $1 HKLM $0 0
    EnumRegValue $2 HKLM $0 0
    ${If} $1 == ""
    ${AndIf} $2 == ""
        DeleteRegKey /ifempty HKLM $0
    ${EndIf}
FunctionEnd

; Removes what the installer has set for dumps, unless an administrator has changed it.
Function un.removeDumpSettings
    ReadRegStr $0 HKLM "${DUMPS_KEY}\Kelvaro.exe" "DumpFolder"
    ReadRegDWORD $1 HKLM "${DUMPS_KEY}\Kelvaro.exe" "DumpCount"
    ReadRegDWORD $2 HKLM "${DUMPS_KEY}\Kelvaro.exe" "DumpType"
    ExpandEnvStrings $3 "${DUMPS_FOLDER}"
    ${If} $0 == "${DUMPS_FOLDER}"
    ${OrIf} $0 == $3
        ${If} $1 = 3
        ${AndIf} $2 = 1
            DeleteRegKey HKLM "${DUMPS_KEY}\Kelvaro.exe"
            StrCpy $0 "${DUMPS_KEY}"
            Call un.removeEmptyKey
            ${GetParent} "${DUMPS_KEY}" $0
            Call un.removeEmptyKey
        ${EndIf}
    ${EndIf}
FunctionEnd

Section Uninstall
    SetOutPath $PLUGINSDIR
    Call un.endRunning
    StrCpy $R3 $INSTDIR
    StrCpy $R8 "$PLUGINSDIR\new.txt"
    Call un.checkFiles
    ; As long as something of it is there, so are the entries: it can be tried again.
    Call un.removeFiles
    ${If} $R4 <> 0
        Push "Not everything could be removed from '$INSTDIR'. Please try it again."
        Push ${EXIT_NOT_WRITTEN}
        Call un.refuse
    ${EndIf}

    StrCpy $0 $INSTDIR
    Call un.removeRunEntry
    ; The uninstaller of a folder that is no longer the installed one takes only its own files with it.
    ReadRegStr $1 HKLM "${UNINSTALL_KEY}" "InstallLocation"
    Call un.isSameFolder
    ${If} $0 = 1
        ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
        Call un.removeRunEntry
        Delete "${START_MENU}\Kelvaro.lnk"
        Delete "${START_MENU}\Kelvaro report.lnk"
        RMDir "${START_MENU}"
        Call un.removeDumpSettings
        DeleteRegKey HKLM "${UNINSTALL_KEY}"
        DeleteRegValue HKLM "${PROGRAM_KEY}" "InstallDir"
        DeleteRegKey /ifempty HKLM "${PROGRAM_KEY}"
    ${EndIf}
    ; What runs is a copy of it; the process that made the copy has its file open for a moment longer.
    StrCpy $0 $EXEPATH
    Call un.fingerprint
    StrCpy $6 $1
    StrCpy $0 "$INSTDIR\Uninstall.exe"
    Call un.fingerprint
    ${For} $7 1 50
        ${If} $1 == $6
            Delete "$INSTDIR\Uninstall.exe"
        ${EndIf}
        RMDir "$INSTDIR"
        ${DirState} "$INSTDIR" $0
        ${If} $0 <> 0 ; not empty, or gone
            ${If} $1 != $6
            ${OrIfNot} ${FileExists} "$INSTDIR\Uninstall.exe"
                ${Break}
            ${EndIf}
        ${EndIf}
        Sleep 100
    ${Next}
SectionEnd
