// The effect combo box: a row for each effect type. Dialog's thread.
#pragma once

#include "render/ParameterSet.h"

#include <cstdint>
#include <windows.h>

struct EffectRow {
    uint32_t effectType;
    const wchar_t *name;
    // Called when the user picks the row; may be null.
    void (*onSelected)(const EffectRow &row, ParameterSet *parameters);
};

// Puts the rows into the list and selects that of an effect type.
void FillEffectList(HWND dialog, uint32_t effectType);
// After a change of the scale: the field as high as the other list's, the rows as high as their pictures.
void FitEffectList(HWND dialog);
// WM_DRAWITEM: a row of the open list with a small picture of its type, or the field with the name alone.
// False for another control.
bool DrawEffectRow(const DRAWITEMSTRUCT &item);
// The rows of the open list anew, with the pictures that are ready by now.
void RedrawEffectRows(HWND dialog);
// Selects the row of an effect type when it is not selected already; no row for an unknown type.
void ShowEffectType(HWND dialog, uint32_t effectType);
// The user picked a row: its type goes into the parameter set, and the dialog is told.
void OnEffectChosen(HWND dialog, ParameterSet *parameters);

// Gives Number of Points the value that an effect type proposes, as if the user had typed it. An unknown type
// is reported and changes nothing.
void SelectEffectType(uint32_t effectType, ParameterSet *parameters);
