// The record's rectangles, in whichever of the two forms is in use: 32-bit coordinates when the host has its
// big-document record and honours them, 16-bit ones otherwise.
#pragma once

#include "engine/image/Geometry.h"

constexpr IntRect kEmptyRect = {0, 0, 0, 0};

bool Uses32BitCoordinates();
IntRect FilterArea();
void RequestInput(const IntRect &area);
void RequestOutput(const IntRect &area);
void RequestMask(const IntRect &area);
// The whole filter area has been dealt with: all three rectangles empty, in the form in use.
void RequestNothing();
// The same in both forms, so that no host goes on with another advance.
void RequestNothingInBothForms();
