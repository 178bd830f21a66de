#include "ui/history/DialogHistory.h"

#include "engine/table/LightSourceTable.h"
#include "ui/display/PreviewDisplayMarks.h"
#include "ui/fields/ParameterValue.h"
#include "ui/history/UndoHistory.h"
#include "ui/preview/PreviewImages.h"
#include "ui/view/ViewTools.h"
#include "ui/window/DialogMessages.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace {

// Dialog's thread; empty while no dialog is open.
struct {
    HWND dialog;
    ParameterSet *parameters;
    UndoHistory steps;
} gHistory;

std::vector<uint8_t> PresentLights() {
    std::vector<uint8_t> lights;
    if (!gViewTools.tableReady)
        return lights;
    const LightSourceTableView table = GetLightSourceTable();
    lights.resize(table.count);
    std::transform(table.records, table.records + table.count, lights.begin(), PackLightState);
    return lights;
}

bool IsListKeyHeld() {
    constexpr int keys[] = {VK_UP, VK_DOWN, VK_PRIOR, VK_NEXT, VK_HOME, VK_END};
    return std::any_of(std::begin(keys), std::end(keys), [](int key) { return GetKeyState(key) < 0; });
}

UndoMoment PresentMoment() {
    return {static_cast<uint32_t>(GetTickCount()), gFieldGesture, GetCapture() != nullptr, IsListKeyHeld()};
}

void NotePresent() {
    const UndoState now = {*gHistory.parameters, PresentLights()};
    if (gHistory.steps.states.empty())
        BeginHistory(&gHistory.steps, now);
    else
        NoteState(&gHistory.steps, now, PresentMoment());
}

void ShowState(const UndoState &state) {
    CopyParameters(state.parameters, gHistory.parameters);
    RestoreEffects(state.lights.data(), static_cast<uint32_t>(state.lights.size()));
    SendMessageW(gHistory.dialog, kMsgParametersReplaced, 0, 0);
    PostMessageW(gHistory.dialog, kMsgRequestPreview, 0, 0);
    RefreshHiddenLights();
}

// Without memory for more the steps so far are given up, and the dialog goes on.
bool Step(const UndoState *(*step)(UndoHistory *)) {
    if (!gHistory.dialog || GetCapture())
        return false;
    NoteDialogState();
    const UndoState *state = gHistory.steps.states.empty() ? nullptr : step(&gHistory.steps);
    if (state)
        ShowState(*state);
    return state != nullptr;
}

} // namespace

void BeginDialogHistory(HWND dialog, ParameterSet *parameters) {
    gHistory = {dialog, parameters, {}};
    NoteDialogState();
}

void EndDialogHistory() {
    gHistory = {};
}

void NoteDialogState() {
    if (!gHistory.dialog)
        return;
    try {
        NotePresent();
    } catch (const std::bad_alloc &) {
        gHistory.steps = {};
    }
}

void NoteLightsFound() {
    try {
        NoteFoundLights(&gHistory.steps, PresentLights());
    } catch (const std::bad_alloc &) {
        gHistory.steps = {};
    }
}

bool UndoDialogStep() {
    return Step(StepBack);
}

bool RedoDialogStep() {
    return Step(StepForward);
}
