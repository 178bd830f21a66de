// The three commands of the settings menu. Dialog's thread; the dialog has the list of saved sets and handles
// the private messages.
#pragma once

#include "diag/WidePath.h"
#include "storage/ParameterBlock.h"

#include <optional>
#include <windows.h>

// The block becomes the current set, and the dialog refreshes its controls; a preview is left to the caller
// to ask for. False when the current set did not change.
bool ApplyParameterBlock(HWND dialog, const ParameterBlock &block);

// Lets the user pick a set file. One of the parameters folder is applied, with the list's selection cleared;
// any other is added to the list, selected, and the dialog is told so as if the user had chosen it.
// Its place in the list, selected or not, -1 when it has none; nothing when nothing was loaded.
std::optional<int> LoadParameterFileDialog(HWND dialog);
// Lets the user name a file, or take the offered one (empty: none is), and writes the current set to it. The
// set's place in the list; -1 when there is no file that the list shows.
int SaveParameterFileDialog(HWND dialog, const WidePath &offered);
// Asks, then takes the selected entry off the list and deletes its file in the parameters folder.
void DeleteParameterFile(HWND dialog);
