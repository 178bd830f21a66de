// Static pictures that are used as buttons. Dialog's thread.
#pragma once

#include <windows.h>

// A press begins with the button's going down on the picture and counts when it comes up there. True for the
// messages of a press, which the picture must not see; *isClick says whether this one made it count.
bool TakePress(HWND picture, UINT message, LPARAM lParam, bool *isClick);

// The Tab key reaches the picture, Space and Enter do what a click does, and a frame shows the focus.
void MakePictureReachable(HWND picture);
// The click that a static control tells its dialog comes with the release on the picture.
void MakePictureClickOnRelease(HWND picture);
