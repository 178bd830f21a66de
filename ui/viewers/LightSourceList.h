// The list box of the light source table viewer: one line a light source, Ctrl+A and Ctrl+C.
#pragma once

#include <cstdint>
#include <windows.h>

// Gives the list box its keys; they go when it is destroyed. One list box at a time.
void AttachLightSourceList(HWND list);
// Adds the lines of the global table, whose count line was the last text that was generated.
void FillLightSourceList(HWND list, uint32_t count);
