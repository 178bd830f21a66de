// The cursors of the preview display and the keys that change them.
#pragma once

#include "ui/view/ViewCursor.h"

#include <windows.h>

// Lets go of a space bar that came up where nobody told us, and takes Alt and Ctrl from the keyboard, as the
// messages handled so far left it; the cursor follows a change.
void ReadViewModifiers();
// Picks the cursor again for the tool, the keys and the zoom.
void RefreshDisplayCursor();
// While a button is down.
void ShowDragCursor();
// Answers WM_SETCURSOR.
void SetDisplayCursor();

// The cursor itself; it belongs to the module's resources.
HCURSOR LoadDisplayCursor(DisplayCursor cursor);

// The dialog calls this when a key that changes the cursor (Alt, Ctrl, Space) goes down or up while another
// control has the focus.
void OnPreviewModifierKey(WPARAM key, bool down);
// The dialog no longer has the keyboard: no key counts as held.
void OnPreviewDeactivated();
