// Opens a viewer as a diagnostic caller does, and plays its user.
#pragma once

#include <functional>
#include <string>
#include <windows.h>

// Opens the dialog of a module's resources (null: this program's) with the procedure, runs the script while
// it is shown and, unless the script has ended it, closes it. `beforeInit` is called with the window before
// the procedure gets WM_INITDIALOG. Returns the dialog's result.
INT_PTR RunModal(int dialogId, DLGPROC procedure, const std::function<void(HWND)> &script,
                 const std::function<void(HWND)> &beforeInit = nullptr, HINSTANCE module = nullptr);

void PumpMessages();
std::string TextOf(HWND window);
RECT RectIn(HWND dialog, HWND control); // in the dialog's client area
// Presses and releases Ctrl around a character, as the keyboard sends it.
void TypeCtrl(HWND window, WPARAM character);
// What the clipboard holds, as bytes; empty when it does not hold that. SetClipboardText replaces it.
std::string ClipboardBytes(UINT format);
void SetClipboardText(const std::string &text);
