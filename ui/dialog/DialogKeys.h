// What the dialog's keys do: the commands of its accelerator table. Dialog's thread.
#pragma once

#include <windows.h>

// False for a command that is none of them.
bool OnKeyboardCommand(HWND dialog, int command);
