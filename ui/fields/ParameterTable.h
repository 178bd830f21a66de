// The eleven pairs of edit field and trackbar: what each is, and the state it has. Dialog's thread.
#pragma once

#include "render/ParameterSet.h"

#include <cstdint>
#include <windows.h>

constexpr int kParameterControlCount = kParameterCount;

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
    bool composing = false;                  // an input method is at work in the edit
    int wheelRest = 0;                       // of turns too small for a step
};

// A Parameter is the index of its row.
extern ParameterControl gParameterControls[kParameterControlCount];
