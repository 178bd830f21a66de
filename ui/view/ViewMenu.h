// The zoom menu. Dialog's thread, with the view tools attached.
#pragma once

#include <cstdint>
#include <windows.h>

// Opens the menu at a screen point with alignment flags of TrackPopupMenu and applies what the user picks.
void ShowZoomMenu(POINT screen, UINT alignment);
// Above the zoom's text or its arrow.
void ShowZoomMenuAtText(HWND dialog);
void ShowZoomMenuAtArrow(HWND dialog);
// The display's WM_CONTEXTMENU: the point is in screen coordinates, (-1, -1) when a key asked.
void OnPreviewContextMenu(LPARAM screenPoint);
// One of the menu's commands; false for any other.
bool ApplyZoomCommand(uint32_t command);
