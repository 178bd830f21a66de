// The main dialog's commands: its controls' notifications. Dialog's thread.
#pragma once

#include <windows.h>

// WM_COMMAND. False for a command that is none of the dialog's.
bool OnDialogCommand(HWND dialog, int id, int notification, LPARAM lParam);

// Ends the dialog with IDOK or IDCANCEL.
void EndMainDialog(HWND dialog, int result);
