; For tests: the installer as it was in the first version, which kept no list of its files. Nothing here is changed.
;
; The installer: per machine, for 64-bit Windows 8 and later. scripts/release_files.sh runs makensis with
;   VERSION  three numbers          FILES  folder with what is installed     SIZE_KB  its size
;   ICON, FINISH_PICTURE  its pictures
;   OUTPUT   the installer's path   LISTS  folder with install.nsh and uninstall.nsh, the same files by name
;   SIGN     optional: a command that signs the file whose path follows it
;
; Switches: /S installs silently, /D=FOLDER (the last one, without quotes) into this folder, /ALLOWDOWNGRADE replaces
; a newer version without asking. Without /D an installation that is there is replaced where it is.
;
; Exit codes of the installer, and of the uninstaller when it is started with _?=FOLDER (without it, a copy of the
; uninstaller does the work and the exit code is lost). Silently, the reason goes to the standard error.
!define EXIT_CANCELLED 1
!define EXIT_NOT_WRITTEN 2
!define EXIT_RUNNING 3
!define EXIT_NEWER_INSTALLED 4
!define EXIT_UNSUITABLE_FOLDER 5
!define EXIT_OLD_WINDOWS 6

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
    !uninstfinalize '${SIGN} "%1"' = 0
!endif

!include LogicLib.nsh
!include FileFunc.nsh
!include WordFunc.nsh
!include WinVer.nsh
!include WinMessages.nsh
!include MUI2.nsh

!define PROGRAM_KEY "Software\Kelvaro"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Kelvaro"
!define RUN_KEY "Software\Microsoft\Windows\CurrentVersion\Run"
!define START_MENU "$SMPROGRAMS\Kelvaro"

; What the running program is known by: app/start.cpp, framework/core/preview_window.cpp, command_codes.h.
!define MUTEX "KELVARO_G19"
!define WINDOW_CLASS "PanelixWindow"
!define WINDOW_TITLE "Kelvaro"
!define COMMAND_EXIT 0x8003

; The program reads the folder as text of the ANSI code page and, for the start with Windows, at most 260 bytes of
; "FOLDER\Kelvaro.exe" -delay999 and a terminator.
!define MAX_FOLDER_BYTES 235

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
; A part of artwork/rendered/105_picture.bmp, 314 pixels high.
!define MUI_WELCOMEFINISHPAGE_BITMAP "${FINISH_PICTURE}"
!define MUI_ABORTWARNING
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE leaveFolderPage
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_TITLE "Kelvaro is installed"
!define MUI_FINISHPAGE_TEXT "You find it in the Start menu. With the keyboard's software running it appears on the LCD, \
otherwise as an icon in the notification area."
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Start Kelvaro"
!define MUI_FINISHPAGE_RUN_FUNCTION startProgram
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

; What was installed before; both empty when nothing was.
Var oldFolder
Var oldVersion

; What installer and uninstaller have both, the latter with names that begin with "un.".
!macro commonFunctions un

; Ends with this exit code and says why.
Function ${un}refuse
    Exch $0 ; the exit code
    Exch
    Exch $1 ; the reason
    ${If} ${Silent}
        System::Call 'kernel32::AttachConsole(i -1)'
        System::Call 'kernel32::GetStdHandle(i -12) p .r2'
        FileWrite $2 "$1$\r$\n"
    ${Else}
        MessageBox MB_OK|MB_ICONSTOP "$1"
    ${EndIf}
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

; Goes on when Kelvaro runs no longer. With a preview window it is ended; on the LCD only its own menu can do that.
Function ${un}endRunning
    Call ${un}isRunning
    ${If} $0 = 0
        Return
    ${EndIf}
    MessageBox MB_OKCANCEL|MB_ICONEXCLAMATION "Kelvaro is running and must be ended first. End it now?" /SD IDOK IDOK end
    SetErrorLevel ${EXIT_CANCELLED}
    Quit
end:
    Call ${un}askToEnd
    Call ${un}isRunning
    ${If} $0 = 0
        Return
    ${EndIf}
    ${If} ${Silent}
        Push "Kelvaro is running on the keyboard's LCD. End it there first: Exit Applet on its options page."
        Push ${EXIT_RUNNING}
        Call ${un}refuse
    ${EndIf}
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "Kelvaro is still running. On the keyboard's LCD, end it by Exit \
Applet on its options page; then press Retry." IDRETRY end
    SetErrorLevel ${EXIT_CANCELLED}
    Quit
FunctionEnd

; Goes on when the program's file in the folder $0 is not in use, as it is when it runs for another user.
Function ${un}checkFileIsFree
retry:
    ${IfNot} ${FileExists} "$0\Kelvaro.exe"
        Return
    ${EndIf}
    ClearErrors
    FileOpen $1 "$0\Kelvaro.exe" a
    ${IfNot} ${Errors}
        FileClose $1
        Return
    ${EndIf}
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$0\Kelvaro.exe is in use. Does Kelvaro run for another user who is \
logged on? End it, and press Retry." /SD IDCANCEL IDRETRY retry
    Push "$0\Kelvaro.exe is in use, perhaps by another user who is logged on. End it first."
    Push ${EXIT_RUNNING}
    Call ${un}refuse
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

; Leaves $INSTDIR without a backslash at its end.
Function ${un}stripFolder
    StrCpy $1 $INSTDIR 1 -1
    ${While} $1 == "\"
        StrCpy $INSTDIR $INSTDIR -1
        StrCpy $1 $INSTDIR 1 -1
    ${EndWhile}
FunctionEnd

; Removes from the folder $0 what was installed, and the folder when nothing else is in it. The file of a program that
; has just ended can be in use, or be there, for a moment longer.
Function ${un}removeFiles
    ${For} $2 1 50
        !include "${LISTS}/uninstall.nsh"
        Delete "$0\Uninstall.exe"
        RMDir "$0"
        ${DirState} "$0" $1
        ${If} $1 <> 0 ; not empty, or gone
        ${AndIfNot} ${FileExists} "$0\Kelvaro.exe"
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
    Call refuseLostFolder
    ${If} $INSTDIR == "" ; without /D=
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
            Push ${EXIT_UNSUITABLE_FOLDER}
            Call refuse
        ${EndIf}
    ${EndIf}
FunctionEnd

Function un.onInit
    SetRegView 64
    SetShellVarContext all
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
    ${EndIf}
FunctionEnd

Function leaveFolderPage
    Call findFolderFault
    ${If} $0 != ""
        MessageBox MB_OK|MB_ICONEXCLAMATION "$0"
        Abort
    ${EndIf}
FunctionEnd

; By the shell, so that it does not run as administrator.
Function startProgram
    Exec '"$WINDIR\explorer.exe" "${START_MENU}\Kelvaro.lnk"'
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
    Call removeFiles
FunctionEnd

Section
    Call endRunning
    StrCpy $0 $INSTDIR
    Call checkFileIsFree
    ${If} $oldFolder != ""
        StrCpy $0 $oldFolder
        Call checkFileIsFree
    ${EndIf}

    ClearErrors
    SetOutPath "$INSTDIR"
    !include "${LISTS}/install.nsh"
    WriteUninstaller "$INSTDIR\Uninstall.exe"
    WriteRegStr HKLM "${PROGRAM_KEY}" "InstallDir" "$INSTDIR"
    CreateDirectory "${START_MENU}"
    CreateShortcut "${START_MENU}\Kelvaro.lnk" "$INSTDIR\Kelvaro.exe" "" "" "" "" "" "System monitor on the keyboard's LCD"
    ; The window stays, so that the text can be read and copied.
    !if /FileExists "${FILES}/KelvaroReport.exe"
        CreateShortcut "${START_MENU}\Kelvaro report.lnk" "$SYSDIR\cmd.exe" '/d /k ""$INSTDIR\KelvaroReport.exe""' \
            "$INSTDIR\KelvaroReport.exe" 0 "" "" "What Kelvaro finds on this computer"
    !endif
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "Kelvaro"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "The Kelvaro developers"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\Kelvaro.exe"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\Uninstall.exe"'
    WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\Uninstall.exe" /S'
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" ${SIZE_KB}
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
    ${If} ${Errors}
        Push "Not everything could be written into '$INSTDIR' and the registry."
        Push ${EXIT_NOT_WRITTEN}
        Call refuse
    ${EndIf}
    Call leaveOldFolder
SectionEnd

Section Uninstall
    Call un.endRunning
    StrCpy $0 $INSTDIR
    Call un.checkFileIsFree

    StrCpy $0 $INSTDIR
    Call un.runEntryIn
    ${If} $2 != ""
        DeleteRegValue HKCU "${RUN_KEY}" "Kelvaro"
    ${EndIf}
    ; The uninstaller of a folder that is no longer the installed one takes only its own files with it.
    ReadRegStr $1 HKLM "${UNINSTALL_KEY}" "InstallLocation"
    ${If} $1 == $INSTDIR
        Delete "${START_MENU}\Kelvaro.lnk"
        Delete "${START_MENU}\Kelvaro report.lnk"
        RMDir "${START_MENU}"
        DeleteRegKey HKLM "${UNINSTALL_KEY}"
        DeleteRegValue HKLM "${PROGRAM_KEY}" "InstallDir"
        DeleteRegKey /ifempty HKLM "${PROGRAM_KEY}"
    ${EndIf}
    Call un.removeFiles
SectionEnd
