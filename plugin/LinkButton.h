// A button that looks like a link: it can be reached with the keyboard, and a screen reader knows what it is.
// The dialog has it as an owner-drawn button and passes these messages on.
#pragma once

#include <windows.h>

// Gives the button its text and the width of it, within the width that it has.
void SetLinkText(HWND button, const char *text);
// WM_DRAWITEM of the button.
void DrawLink(const DRAWITEMSTRUCT &item);
