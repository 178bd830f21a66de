// How buttons, groups, names and lists are drawn.
#pragma once

#include <windows.h>

void PaintName(HWND name, HDC dc);
void PaintGroup(HWND group, HDC dc);
void PaintCheckBox(HWND box, HDC dc);
void PaintPushButton(HWND button, HDC dc);
// The closed list.
void PaintDropDownList(HWND combo, HDC dc);
