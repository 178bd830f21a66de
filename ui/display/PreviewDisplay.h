// The window that shows the preview: the control of class "ProxyDisplay" in the dialog. Dialog's thread; one
// at a time.
#pragma once

#include "ui/preview/ProxyUpdateTask.h"
#include "ui/view/ViewTools.h"

#include <windows.h>

// Before the dialog is made, from its template: the class of the control. Its windows do nothing by
// themselves.
bool RegisterPreviewDisplayClass();
void UnregisterPreviewDisplayClass();

// Gives the dialog's display its behaviour, attaches the view tools and starts the Proxy Update Task. All of
// it ends when the display is destroyed. False, with a display that stays empty, when there is no such
// control or the task does not start.
bool AttachPreviewDisplay(HWND dialog, const PreviewSource &source, ShowToolPicture showPicture);

// The dialog answers kMsgTableReady with this. True when the table has become ready just now: the message
// alone, which anybody can send, makes nothing ready.
bool OnPreviewTableReady();
