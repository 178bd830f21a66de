// Opening and closing of the main dialog. Dialog's thread.
#pragma once

#include <windows.h>

// WM_INITDIALOG and WM_DESTROY.
void InitializeMainDialog(HWND dialog);
void ReleaseMainDialog();
// The colours of the present look: once, and when it has changed.
void DressMainDialog(HWND dialog);
// Gives the host its window back, once.
void FreeHost();

// Makes the bold font anew to the controls' present font, and gives it to the group boxes.
void UseBoldGroupFont(HWND dialog);
