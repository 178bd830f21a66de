#include "ui/history/UndoHistory.h"

#include <algorithm>
#include <new>
#include <utility>

namespace {

// What a change changed: the index of a parameter, or one of these.
enum ChangeKind : int32_t { kNothing = -1, kEffect = kParameterCount, kSwitch, kWholeSet, kLights };

int32_t ChangedParameter(const ParameterSet &a, const ParameterSet &b) {
    int32_t changed = kNothing;
    for (int32_t i = 0; i < kParameterCount; ++i)
        if (a.*kParameterFields[i] != b.*kParameterFields[i])
            changed = changed == kNothing ? i : kWholeSet;
    return changed;
}

// An effect brings its number of points along.
int32_t KindOfChange(const UndoState &before, const UndoState &after) {
    const ParameterSet &a = before.parameters, &b = after.parameters;
    const int32_t parameter = ChangedParameter(a, b);
    if (a.effectType != b.effectType)
        return parameter == kNothing || parameter == kNumberOfPoints ? kEffect : kWholeSet;
    if (a.outputSpikesOnly != b.outputSpikesOnly)
        return parameter == kNothing ? kSwitch : kWholeSet;
    if (parameter != kNothing)
        return parameter;
    const bool sameLights = std::equal(before.lights.get(), before.lights.get() + before.lightCount,
                                       after.lights.get(), after.lights.get() + after.lightCount);
    return sameLights ? kNothing : kLights;
}

bool ContinuesRun(const UndoHistory &history, int32_t kind, const UndoMoment &moment) {
    if (!history.runIsOpen || history.present == 0)
        return false;
    const bool isSoon = moment.milliseconds - history.last.milliseconds <= kRunMilliseconds;
    if (kind < kParameterCount)
        return kind == history.lastKind && moment.gesture == history.last.gesture &&
               (moment.mouseHeld || isSoon);
    const bool isOfList = kind == kEffect || kind == kWholeSet;
    return isOfList && moment.listKeyHeld && history.last.listKeyHeld && isSoon;
}

bool SameState(const UndoState &a, const UndoState &b) {
    return KindOfChange(a, b) == kNothing;
}

} // namespace

void BeginHistory(UndoHistory *history, UndoState now) {
    *history = {};
    history->states[0] = std::move(now);
    history->count = 1;
}

void NoteState(UndoHistory *history, UndoState now, const UndoMoment &moment) {
    const int32_t kind = KindOfChange(history->states[history->present], now);
    if (kind == kNothing)
        return;
    if (!ContinuesRun(*history, kind, moment)) {
        UndoState *states = history->states;
        if (history->present == kUndoSteps)
            std::move(states + 1, states + kUndoSteps + 1, states);
        else
            ++history->present;
        history->count = history->present + 1;
    }
    history->states[history->present] = std::move(now);
    history->lastKind = kind;
    history->last = moment;
    history->runIsOpen = true;
}

bool NoteFoundLights(UndoHistory *history, const uint8_t *lights, uint32_t count) {
    for (size_t i = 0; i < history->count; ++i) {
        UndoState &state = history->states[i];
        state.lights.reset(new (std::nothrow) uint8_t[count]);
        state.lightCount = state.lights ? count : 0;
        if (!state.lights)
            return false;
        std::copy_n(lights, count, state.lights.get());
    }
    return true;
}

// A run that ended where it began is no step that anybody would see.
const UndoState *StepBack(UndoHistory *history) {
    history->runIsOpen = false;
    const size_t from = history->present;
    while (history->present > 0)
        if (!SameState(history->states[--history->present], history->states[from]))
            return &history->states[history->present];
    return nullptr;
}

const UndoState *StepForward(UndoHistory *history) {
    history->runIsOpen = false;
    const size_t from = history->present;
    while (history->present + 1 < history->count)
        if (!SameState(history->states[++history->present], history->states[from]))
            return &history->states[history->present];
    return nullptr;
}

bool SameParameters(const ParameterSet &a, const ParameterSet &b) {
    return ChangedParameter(a, b) == kNothing && a.effectType == b.effectType &&
           a.outputSpikesOnly == b.outputSpikesOnly;
}

void CopyParameters(const ParameterSet &from, ParameterSet *to) {
    for (const auto field : kParameterFields)
        to->*field = from.*field;
    to->effectType = from.effectType;
    to->outputSpikesOnly = from.outputSpikesOnly;
}
