// The eleven pairs of edit field and trackbar that show and set the numeric parameters. Dialog's thread.
#pragma once

#include "render/ParameterSet.h"

#include <cstdint>
#include <windows.h>

constexpr int kParameterControlCount = 11;

// One row of the table: what a pair is, and the state it has while a dialog shows it.
struct ParameterControl {
    int16_t minimum, maximum; // of the stored integer
    int16_t arrowStep, pageStep;
    int16_t defaultValue;
    int16_t textLimit; // characters that can be typed
    uint16_t editId, trackbarId;
    const char *editTooltip, *trackbarTooltip;
    int16_t decimals; // the value is shown divided by 10^decimals
    int16_t ctrlStep; // of an arrow key with Ctrl

    bool editing = false;                    // the edit field or its trackbar has the focus
    int16_t *value = nullptr;                // the parameter; null while no dialog shows the row
    HWND edit = nullptr, trackbar = nullptr; // both or none
    HFONT font = nullptr;                    // shared by all rows
};

// In parameter-index order: threshold, intensity, length, angle, number of points, spike sharpness, colour
// saturation, rainbow intensity, rainbow frequency, secondary spike intensity, soft flare intensity.
extern ParameterControl gParameterControls[kParameterControlCount];

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
