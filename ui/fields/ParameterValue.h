// The steps that the edit and the trackbar of a pair share. All take a bound row.
#pragma once

#include "ui/fields/ParameterTable.h"

// Counts on with every press of the mouse on a trackbar, and with every change of the field that has the
// focus, so that the changes of one gesture can be told from those of the next.
extern uint32_t gFieldGesture;

constexpr size_t kNumberTextCapacity = 33; // 32 characters of an edit are read

int16_t ClampToRow(const ParameterControl &row, int32_t value);

// Both write into the edit without a change notification; a value out of range is ignored.
void ShowParameterValue(const ParameterControl &row, int32_t value);
void SetEditText(const ParameterControl &row, const wchar_t *text);
void SelectEditText(const ParameterControl &row);

int32_t TrackbarPosition(const ParameterControl &row);
void MoveTrackbar(const ParameterControl &row, int32_t value);

// Stores the value, shows it and tells the dialog, whether or not it changed.
void TakeParameterValue(ParameterControl *row, int32_t value);
void SendParameterChanged(const ParameterControl &row);

// Moves the value through the trackbar, as far as the range goes; tells the dialog when it changed.
void StepParameterValue(ParameterControl *row, int32_t amount);

// Whether the row belongs to live controls and a parameter.
inline bool IsBound(const ParameterControl &row) {
    return row.value && row.edit && row.trackbar;
}
