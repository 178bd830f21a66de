// The DPI awareness of the thread that shows the dialog. The dialog draws at the scale of its monitor; the
// host's windows keep the awareness they were made with, and the process's is never touched. On systems
// without the setting all of this does nothing. Dialog's thread.
#pragma once

// What to put back. Null: nothing was changed.
using DpiCookie = void *;

// Around the creation and the life of the dialog: per-monitor awareness, the newest form the system has.
// Enter and leave nest. In between no call is made into the host, which would see an awareness not its own;
// the system itself puts each window's awareness in place around the window's procedure.
DpiCookie EnterDialogDpi();
void LeaveDialogDpi(DpiCookie cookie);
