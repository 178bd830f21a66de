// The comparison with the photograph: while a key or the mouse is held, the view shows it without stars.
// Dialog's thread.
#pragma once

#include <windows.h>

constexpr WPARAM kCompareKey = 'B';

// The view changes at once. Ending what has not begun does nothing.
void BeginComparison();
void EndComparison();
