// The user's named parameter sets: "name.sss" files in the parameters folder. Host's thread.
#pragma once

#include "diag/Log.h"
#include "diag/WidePath.h"
#include "storage/ParameterBlock.h"

// The parameters folder. False, reported, when there is none.
bool GetUserParametersFolder(WidePath *folder);

// Reads a saved set, wherever it lies; the block comes from malloc and belongs to the caller. Null when the
// file holds no set of this version: the user has then been told, with a box on the owner window, and an
// invalid or obsolete file has been deleted. One that could not be read stays. Needs the accessor.
ParameterBlock *ReadSavedParameterSet(NativeWindow ownerWindow, const wchar_t *path);

// Reads every set of the parameters folder and hands over its path and its block, which from then on belongs
// to `take`. What cannot be read goes as ReadSavedParameterSet tells; a folder is passed by. False, reported,
// when the parameters folder could not be searched.
using ParameterSetTaker = void (*)(void *context, const wchar_t *path, ParameterBlock *block);
bool ReadAllParameterSets(NativeWindow ownerWindow, ParameterSetTaker take, void *context);

// False, reported to the user, when the file could not be deleted.
bool DeleteSavedParameterSet(const wchar_t *path);

// A set's name: the file name up to its last point.
void NameOfParameterSet(const wchar_t *path, WidePath *name);
