// Where a field has its digits, and what is around them. Dialog's thread.
#pragma once

#include <windows.h>

// Makes the field's client area one line as high as the labels', in the middle of the field, so that digits
// and labels have one size at every scale; the rest is drawn as the frame. Again after the first time it only
// takes the field's present size.
void FrameField(HWND field);
