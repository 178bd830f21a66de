// What stands around the pairs of fields and trackbars: each one's name, and the pictures of less and more.
#pragma once

#include <windows.h>

// A press on a point of the dialog's client area: on a picture it steps the parameter to that side, by the
// arrow step or with Ctrl by the larger one, and again for as long as it is held. False beside them.
bool OnParameterPicturePressed(HWND dialog, POINT client);
// The same single step for the picture of that id. False for any other control.
bool OnParameterPicture(int controlId);
// The dialog's WM_TIMER, and the end of the press. False when they are about something else.
bool OnParameterPictureTimer(HWND dialog, UINT_PTR timer);
bool OnParameterPictureReleased(HWND dialog);

// A double click on a point of the dialog's client area: on a name or a picture it puts the parameter's
// default back. False beside them.
bool OnParameterLabelDoubleClick(HWND dialog, POINT client);
