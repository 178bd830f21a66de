// Painting of the preview display. The display is attached.
#pragma once

#include <windows.h>

struct DisplaySurface;

// Makes the regions that painting works with; what cannot be made is reported, and painting does without.
void CreateDisplayRegions(DisplaySurface *surface);
void FreeDisplaySurface(DisplaySurface *surface);

// What is written over the picture, or null.
const char *PreviewLabel();

// Answers WM_PAINT: what is invalid is drawn off the screen first.
void PaintDisplay();
// Answers WM_PRINT and WM_PRINTCLIENT: everything.
void PrintDisplay(HDC dc);
