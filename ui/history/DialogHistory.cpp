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
#include <utility>

namespace {

// Dialog's thread; empty while no dialog is open.
struct {
    HWND dialog;
    ParameterSet *parameters;
    UndoHistory steps;
} gHistory;

// False without memory. A table of no lights is a table all the same.
bool PackPresentLights(UndoState *state) {
    if (!gViewTools.tableReady)
        return true;
    const LightSourceTableView table = GetLightSourceTable();
    state->lights.reset(new (std::nothrow) uint8_t[table.count]);
    if (!state->lights)
        return false;
    std::transform(table.records, table.records + table.count, state->lights.get(), PackLightState);
    state->lightCount = table.count;
    return true;
}

bool IsListKeyHeld() {
    constexpr int keys[] = {VK_UP, VK_DOWN, VK_PRIOR, VK_NEXT, VK_HOME, VK_END};
    return std::any_of(std::begin(keys), std::end(keys), [](int key) { return GetKeyState(key) < 0; });
}

UndoMoment PresentMoment() {
    return {static_cast<uint32_t>(GetTickCount()), gFieldGesture, GetCapture() != nullptr, IsListKeyHeld()};
}

void ShowState(const UndoState &state) {
    CopyParameters(state.parameters, gHistory.parameters);
    RestoreEffects(state.lights.get(), state.lightCount);
    SendMessageW(gHistory.dialog, kMsgParametersReplaced, 0, 0);
    PostMessageW(gHistory.dialog, kMsgRequestPreview, 0, 0);
    RefreshHiddenLights();
}

bool Step(const UndoState *(*step)(UndoHistory *)) {
    if (!gHistory.dialog || GetCapture())
        return false;
    NoteDialogState();
    const UndoState *state = gHistory.steps.count == 0 ? nullptr : step(&gHistory.steps);
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

// Without memory for more the steps so far are given up, and the dialog goes on.
void NoteDialogState() {
    if (!gHistory.dialog)
        return;
    UndoState now = {*gHistory.parameters, nullptr, 0};
    if (!PackPresentLights(&now))
        gHistory.steps = {};
    else if (gHistory.steps.count == 0)
        BeginHistory(&gHistory.steps, std::move(now));
    else
        NoteState(&gHistory.steps, std::move(now), PresentMoment());
}

void NoteLightsFound() {
    UndoState now = {};
    if (!PackPresentLights(&now) || !NoteFoundLights(&gHistory.steps, now.lights.get(), now.lightCount))
        gHistory.steps = {};
}

bool UndoDialogStep() {
    return Step(StepBack);
}

bool RedoDialogStep() {
    return Step(StepForward);
}
