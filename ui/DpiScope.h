// The DPI awareness of the thread that shows the dialog. The dialog draws at the scale of its monitor; the
// host's windows keep the awareness they were made with, and the process's is never touched. On systems
// without the setting all of this does nothing. Dialog's thread.
#pragma once

// What to put back. Null: nothing was changed.
using DpiCookie = void *;

// Around the creation and the life of the dialog: per-monitor awareness, the newest form the system has.
// Enter and leave nest.
DpiCookie EnterDialogDpi();
void LeaveDialogDpi(DpiCookie cookie);

// Around a call into the host that is made while the dialog is open: the awareness that the thread had before
// the dialog. Null, and no change, outside EnterDialogDpi.
DpiCookie EnterHostDpi();
void LeaveHostDpi(DpiCookie cookie);
