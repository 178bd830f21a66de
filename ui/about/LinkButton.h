// A button that looks like a link: it can be reached and pressed with the keyboard, and a screen reader knows
// what it is. It is an owner-drawn button of a dialog, which hears of a press as of any button's.
#pragma once

#include <windows.h>

// Makes the button a link and gives it its text, and the width of that within the width that it has.
void SetLinkText(HWND button, const char *text);
// WM_DRAWITEM of the button.
void DrawLink(const DRAWITEMSTRUCT &item);
