// The list of saved parameter sets in the dialog, and the menu beside it. Dialog's thread.
#pragma once

#include <windows.h>

// The rows of the dialog's own, before those of the files: the defaults, and the set with which the dialog
// was opened.
constexpr int kOwnSettingsRows = 2;

// Puts the dialog's own rows and the saved sets into the list; none is selected.
void FillSettingsList(HWND dialog);
// Selects the row that has the dialog's present values, if one has; of several the one chosen last.
void SelectFittingSettings(HWND dialog);
// As if the user had picked the row of the defaults.
void ChooseDefaultSettings(HWND dialog);
// The user picked a row: its set becomes the current one, and the focus leaves the list. While the list is
// open it stays, so that the arrow keys can try one set after the other and Enter does not reach the OK
// button.
void OnSettingsChosen(HWND dialog);
void OnSettingsListClosed(HWND dialog);
// After a change of a parameter: selects the row chosen last while it still says what is set, else none.
void ReselectSettings(HWND dialog);

// Opens the menu under its icon and does what the user picks. Nothing without a folder for the sets.
void ShowSettingsMenu(HWND dialog);
