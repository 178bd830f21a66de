// What screen readers call the dialog's controls that have no text of their own. Dialog's thread.
#pragma once

#include <windows.h>

// Names the dialog's pictures, bars, fields and its preview. Needs COM; on a system that does not offer the
// service nothing happens. The names go with the dialog: call ForgetControlNames before its controls are
// destroyed.
void NameControls(HWND dialog);
void ForgetControlNames(HWND dialog);
