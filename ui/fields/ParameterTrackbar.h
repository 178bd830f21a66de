// Behaviour of the trackbar of a pair. The handlers take a bound row; tests call them too.
#pragma once

#include "ui/fields/ParameterTable.h"

// Hangs the behaviour on row->trackbar; it comes off when the window is destroyed.
void SubclassParameterTrackbar(ParameterControl *row);

void OnTrackbarSetFocus(ParameterControl *row);
void OnTrackbarKillFocus(ParameterControl *row, HWND nextFocus);
// Before the control sees the press: the point it is given instead. On the thumb that is the thumb's centre;
// elsewhere the edit's text is selected and the point stays.
LPARAM OnTrackbarButtonDown(const ParameterControl &row, LPARAM point);
// After the control has moved the thumb.
void OnTrackbarDragged(ParameterControl *row);
void OnTrackbarStepped(ParameterControl *row);
void OnTrackbarButtonUp(ParameterControl *row);
