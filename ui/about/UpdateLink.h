// The main dialog's link to a newer version, below the preview. It is there only when one is known.
#pragma once

#include <windows.h>

// At WM_INITDIALOG, before the layout is recorded, which then moves the link with the other controls. The
// dialog needs to know nothing of it.
void AddUpdateLink(HWND dialog);
