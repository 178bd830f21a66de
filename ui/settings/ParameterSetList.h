// The dialog's drop-down list of saved parameter sets. An entry's text is the set's name, its item data the
// set's block, from malloc, which the list owns, with the path of the set's file; entries of the dialog's own
// have no path, and may have no block (0). Dialog's thread.
#pragma once

#include "diag/WidePath.h"
#include "storage/ParameterBlock.h"

#include <windows.h>

// Adds every set of the parameters folder. Entries that are there already stay.
void FillParameterSetList(HWND dialog);
// Removes all entries with their blocks.
void FreeParameterSetList(HWND dialog);

// Adds an entry of the dialog's own and takes over the block, which may be null. The entry's index; -1, with
// the block freed, when the list took no entry.
int AddParameterSet(HWND dialog, const wchar_t *name, ParameterBlock *block);
// The same for a file. The entry that stands for it already gets the block; one of the same name that stands
// for another file does not.
int ListParameterSetFile(HWND dialog, const wchar_t *path, ParameterBlock *block);
int FindParameterSetFile(HWND dialog, const wchar_t *path); // -1: none stands for it
void RemoveParameterSet(HWND dialog, int index);

// Null for an index that is none, or an entry without a block.
const ParameterBlock *ParameterSetAt(HWND dialog, int index);
// The path of the entry's file; empty when there is none.
WidePath ParameterSetPath(HWND dialog, int index);
int SelectedParameterSet(HWND dialog); // -1: none
// Selects without telling the dialog; -1 clears the selection.
void SelectParameterSet(HWND dialog, int index);
// The entry's text. False, with *name unchanged, for an index that is none or a text that does not fit.
bool ParameterSetName(HWND dialog, int index, wchar_t *name, size_t capacity);
