// The wheel over the pairs of fields and trackbars.
#pragma once

#include <windows.h>

// A turn of the wheel, with the parameters of its message: whole turns step the value of the pair under the
// pointer, whichever control has the focus. False when no pair lies there.
bool OnParameterWheel(WPARAM wheel, LPARAM screenPoint);
