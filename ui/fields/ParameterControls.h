// The eleven pairs of edit field and trackbar that show and set the numeric parameters. Dialog's thread.
#pragma once

#include "ui/fields/ParameterTable.h"

#include <windows.h>

// Adds every edit and trackbar of the dialog to its tooltip window. Needs no binding.
void RegisterParameterTooltips(HWND dialog, HWND tooltipWindow);

// Ties a row to its controls in the dialog and to the parameter, which is brought into range and shown; a row
// without controls writes its default into the parameter. The parameter must stay where it is until the
// controls are destroyed; they then let go of it by themselves.
void BindParameterControl(HWND dialog, ParameterControl *row, int16_t *value);
void BindParameterControls(HWND dialog, ParameterSet *parameters);

// Brings every parameter into range and writes it into its controls, without telling the dialog.
void RefreshParameterControls();

// EN_CHANGE of an edit field. False when no row has that edit.
bool OnParameterEditChanged(int editId);

// Puts the focus on a row's edit, with the focus marks and mnemonics visible. Nothing for an unbound row or
// an index out of range.
void FocusParameterControl(int index);
