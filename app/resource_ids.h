// Numbers of the program's own resources and of the dialog's controls, and the dialog's caption. Plain
// defines, because the resource compiler reads this file too.
#pragma once

#define IDI_KELVARO 300

#define IDD_SETTINGS 101
#define SETTINGS_CAPTION "Settings"

// Controls of the settings dialog.
#define IDC_SAVE 1000
#define IDC_DELAY 1001
#define IDC_AUTOSTART 1002
#define IDC_CANCEL 1003
#define IDC_DELAY_WARNING 1004
