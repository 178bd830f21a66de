// What can be taken back in the dialog, and which changes are one step: records and rules without windows.
// The dialog notes its state after every change; a step is the way from one noted state to the next.
#pragma once

#include "render/ParameterSet.h"

#include <cstddef>
#include <cstdint>
#include <memory>

constexpr size_t kUndoSteps = 200;
// A run of key presses, of turns of the wheel or of typed digits goes on for so long after the last one.
constexpr uint32_t kRunMilliseconds = 1000;

struct UndoState {
    ParameterSet parameters;
    std::unique_ptr<uint8_t[]> lights; // one a light of the table; null while there is no table
    uint32_t lightCount;
};

// When and how a change was made.
struct UndoMoment {
    uint32_t milliseconds; // of a clock that may run over
    uint32_t gesture;      // another one for another press of the mouse, and another field
    bool mouseHeld;        // a drag goes on, however slowly
    bool listKeyHeld;      // a list is walked through by its keys
};

struct UndoHistory {
    UndoState states[kUndoSteps + 1]; // the oldest first
    size_t count;                     // 0 before BeginHistory
    size_t present;
    int32_t lastKind; // of the change noted last
    UndoMoment last;
    bool runIsOpen; // the next change may belong to the same step
};

void BeginHistory(UndoHistory *history, UndoState now);
// A state that is the present one is no change.
void NoteState(UndoHistory *history, UndoState now, const UndoMoment &moment);
// The lights are found after the dialog has opened, and none is hidden then: all states get them. False when
// there is no memory for them; the history is of no use then.
bool NoteFoundLights(UndoHistory *history, const uint8_t *lights, uint32_t count);

// The state to show now, which has become the present one; null when there is no step left.
const UndoState *StepBack(UndoHistory *history);
const UndoState *StepForward(UndoHistory *history);

bool SameParameters(const ParameterSet &a, const ParameterSet &b);
// The values, the effect and the switch; nothing else of the record.
void CopyParameters(const ParameterSet &from, ParameterSet *to);
