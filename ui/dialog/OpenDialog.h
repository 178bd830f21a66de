// Opening the main dialog on a subject.
#pragma once

#include "ui/dialog/MainDialogState.h"

enum class DialogEnd {
    ok,
    cancelled, // by the user
    failed,    // it could not be opened, or a fatal error ended it
};

// Shows the dialog above the owner until it is closed.
DialogEnd OpenDialog(HWND owner, const DialogSubject &subject);
