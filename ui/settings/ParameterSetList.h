// The dialog's drop-down list of saved parameter sets. An entry's text is the set's name, its item data the
// set's block, from malloc, which the list owns; entries of the dialog's own may have none (0). Dialog's
// thread.
#pragma once

#include "storage/ParameterBlock.h"

#include <windows.h>

// Adds every set of the parameters folder. Entries that are there already stay.
void FillParameterSetList(HWND dialog);
// Removes all entries with their blocks.
void FreeParameterSetList(HWND dialog);

// Takes over the block. The entry's index; -1, with the block freed, when the list took no entry.
int AddParameterSet(HWND dialog, const wchar_t *name, ParameterBlock *block);
// Gives the entry of that name (case ignored) the block, or adds one.
int ReplaceParameterSet(HWND dialog, const wchar_t *name, ParameterBlock *block);
void RemoveParameterSet(HWND dialog, int index);

// Null for an index that is none, or an entry without a block.
const ParameterBlock *ParameterSetAt(HWND dialog, int index);
int SelectedParameterSet(HWND dialog); // -1: none
// Selects without telling the dialog; -1 clears the selection.
void SelectParameterSet(HWND dialog, int index);
// The entry's text. False, with *name unchanged, for an index that is none or a text that does not fit.
bool ParameterSetName(HWND dialog, int index, wchar_t *name, size_t capacity);
