// The person at a window, for every suite that drives a dialog or a control: waiting, mouse, wheel, keys, and
// looking at what a control says. A new suite makes its window, or lets PlayModal run a modal one, and calls
// these; a fixture adds only what is its own (which control, what is counted). Posted input (ClickAt, DragOn,
// PostKey) goes through the message loop and the dialog manager as the system's does; sent input (SendMouse,
// PressKey, TypeText) is handled at once, for tests that look between two messages. Points are client
// coordinates of the window that gets the message.
#pragma once

#include <functional>
#include <string>
#include <windows.h>

// Handles every message that waits, as a modal dialog's own loop does; with `dialog` only while that is
// shown.
void PumpMessages(HWND dialog = nullptr);
// Pumps until it holds. False when that takes too long, or `dialog` is gone.
bool PumpUntil(const std::function<bool()> &holds, DWORD milliseconds = 10000, HWND dialog = nullptr);
void PumpFor(DWORD milliseconds, HWND dialog = nullptr);

LPARAM PointParam(LONG x, LONG y);
void SendMouse(HWND window, UINT message, POINT point, WPARAM keys = 0);
void ClickAt(HWND window, POINT point);
// Press, moves by steps, release.
void DragOn(HWND window, POINT from, POINT to, int steps = 5);
LRESULT TurnWheel(HWND window, POINT point, int delta, WPARAM keys = 0);

// What the keyboard state says until it is called again.
void HoldKeys(bool alt, bool ctrl, bool shift = false);
void PressKey(HWND window, WPARAM key, int repeatCount = 1);
void TypeText(HWND window, const char *text);
// To the control with the focus.
void PostKey(HWND dialog, WORD key);
// CBN_SELCHANGE with the row chosen.
void ChooseRow(HWND dialog, int comboId, int row);

std::string TextOf(HWND window);
RECT RectIn(HWND parent, HWND control); // in the parent's client area
RECT ClientOf(HWND window);
SIZE SizeOf(const RECT &rect);
// Where the middle of a trackbar's thumb stands for a value.
POINT ThumbAt(HWND trackbar, int value);
// Of the tool that the dialog's tooltip window has for a control; the system gives no more than 80
// characters.
std::string TooltipOf(HWND dialog, HWND control);

// What the clipboard holds, as bytes; empty when it does not hold that. SetClipboardText replaces it.
std::string ClipboardBytes(UINT format);
void SetClipboardText(const std::string &text);

// Runs a modal dialog: `open` opens it with the procedure that it is given, which lets `watch` handle each
// message around the real one. The script runs inside the modal loop when the dialog is shown.
using DialogWatch = std::function<INT_PTR(DLGPROC real, HWND, UINT, WPARAM, LPARAM)>;
INT_PTR PlayModal(DLGPROC real, const std::function<INT_PTR(DLGPROC)> &open,
                  const std::function<void(HWND)> &script, const DialogWatch &watch = nullptr);
// The same with a dialog of a module's resources (null: this program's). Unless the script has ended it, it
// is closed.
INT_PTR RunModal(int dialogId, DLGPROC procedure, const std::function<void(HWND)> &script,
                 const DialogWatch &watch = nullptr, HINSTANCE module = nullptr);
