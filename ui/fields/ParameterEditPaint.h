// The look of the edit fields, drawn by ourselves.
#pragma once

#include "ui/fields/ParameterTable.h"

// Gives the row the font of all the fields, made on first use to the height of this field's formatting
// rectangle, and puts it into the edit, so that the caret stands where the drawn digits are.
void UseParameterFont(ParameterControl *row);
void DeleteParameterFont();
// After the fields' size has changed: a font of the new height for every row that is bound.
void RenewParameterFont();

// Answers WM_PAINT of a bound row's edit.
void PaintParameterEdit(const ParameterControl &row);
