// Behaviour of the edit field of a pair. The handlers take a bound row; tests call them too.
#pragma once

#include "ui/fields/ParameterTable.h"

// Hangs the behaviour on row->edit; it comes off when the window is destroyed.
void SubclassParameterEdit(ParameterControl *row);

void OnEditSetFocus(ParameterControl *row);
void OnEditKillFocus(ParameterControl *row);
// An arrow or page key: steps the value through the trackbar. A key that would set text as in a letter does
// nothing. False for any other key.
bool OnEditKey(ParameterControl *row, WPARAM key, int repeatCount, bool ctrlDown);
// Whether a typed character goes to the control; beeps for one that does not belong to a number.
bool OnEditCharacter(WPARAM character);

// Lets go of the parameter and of both controls. With the last row that has controls the shared font goes
// too, and the parameters of the rows without controls are let go.
void UnbindParameterControl(ParameterControl *row);
