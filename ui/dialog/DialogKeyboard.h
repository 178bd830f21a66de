// The dialog's keyboard: the message hook that turns plain keys into commands. Dialog's thread.
#pragma once

#include <windows.h>

// Hooks the thread's messages until RemoveKeyboardHook.
void InstallKeyboardHook();
void RemoveKeyboardHook();

// A combo box gained or lost the focus: while one claims the keys, they stay with the controls.
void OnComboFocus(int controlId, bool gained);
