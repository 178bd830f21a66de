// Undo and redo in the dialog: its values, effect, switch and hidden lights. Dialog's thread.
#pragma once

#include "render/ParameterSet.h"

#include <windows.h>

// When the controls show the parameters, which stay where they are until EndDialogHistory.
void BeginDialogHistory(HWND dialog, ParameterSet *parameters);
void EndDialogHistory();

// After every change, of whatever sort: one that is none is not noted.
void NoteDialogState();
// The light source table can be read.
void NoteLightsFound();

// Takes the last step back, or makes it again: the parameters and lights have changed, the controls show
// them and a preview is asked for. False when there is no such step, or the mouse is at work.
bool UndoDialogStep();
bool RedoDialogStep();
