// Check boxes that each stand for a flag of the parameter set. Dialog's thread.
#pragma once

#include "render/ParameterSet.h"

#include <windows.h>

// Ties every box of the dialog to its flag, and shows it.
void BindCheckBoxes(HWND dialog, ParameterSet *parameters);
void RefreshCheckBoxes(HWND dialog);
// The user clicked a box: its flag follows, and the dialog is told when it changed. False for a control that
// is none of the boxes.
bool OnCheckBoxClicked(HWND dialog, int controlId);
void ReleaseCheckBoxes();
