#include "ui/history/UndoHistory.h"

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
    return before.lights != after.lights ? kLights : kNothing;
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

void BeginHistory(UndoHistory *history, const UndoState &now) {
    *history = {};
    history->states.push_back(now);
}

void NoteState(UndoHistory *history, const UndoState &now, const UndoMoment &moment) {
    const int32_t kind = KindOfChange(history->states[history->present], now);
    if (kind == kNothing)
        return;
    if (ContinuesRun(*history, kind, moment)) {
        history->states[history->present] = now;
    } else {
        history->states.resize(history->present + 1);
        history->states.push_back(now);
        if (history->states.size() > kUndoSteps + 1)
            history->states.erase(history->states.begin());
        history->present = history->states.size() - 1;
    }
    history->lastKind = kind;
    history->last = moment;
    history->runIsOpen = true;
}

void NoteFoundLights(UndoHistory *history, const std::vector<uint8_t> &lights) {
    for (UndoState &state : history->states)
        state.lights = lights;
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
    while (history->present + 1 < history->states.size())
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
