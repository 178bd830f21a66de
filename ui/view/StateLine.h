// The line that says in words how many lights there are and which of them have stars. It stands where the
// progress is shown, while there is none. Dialog's thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <windows.h>

struct LightCounts {
    uint32_t all, withStars, hidden;
    uint32_t starsInView; // with their middle on the display
};

// Of the light source table, for the present view.
LightCounts CountLights(int32_t threshold);
// False, with an empty text, when it does not fit.
bool FormatLightCounts(const LightCounts &counts, bool isLong, wchar_t *text, size_t capacity);

// Makes the line in the place of the progress bar, before the layout is recorded.
void AddStateLine(HWND dialog);
// Shows the line for the present state, or `instead` when it is not null, or the progress bar while it is at
// work or nothing is known yet.
void ShowStateLine(HWND dialog, int32_t threshold, bool isWorking, const wchar_t *instead = nullptr);
