// What stands around the pairs of fields and trackbars: each one's name, and the pictures of less and more.
#pragma once

#include <windows.h>

// A double click on a point of the dialog's client area: on a name or a picture it puts the parameter's
// default back. False beside them.
bool OnParameterLabelDoubleClick(HWND dialog, POINT client);
