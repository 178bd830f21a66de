// Which window the reporter's message boxes belong to while a dialog is open.
#pragma once

#include "diag/Log.h"

#include <windows.h>

struct MessageBoxOwner {
    bool taken;
    NativeWindow previous;
};

// Makes the dialog the owner, when this is the thread that message boxes are shown on.
inline void TakeMessageBoxes(HWND dialog, MessageBoxOwner *owner) {
    if (!IsReportOwnerThread())
        return;
    owner->previous = SetReportOwnerWindow(dialog);
    owner->taken = true;
}

// Makes the previous window the owner again; once.
inline void GiveMessageBoxesBack(MessageBoxOwner *owner) {
    if (owner->taken && IsReportOwnerThread())
        SetReportOwnerWindow(owner->previous);
    owner->taken = false;
}
