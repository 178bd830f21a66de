#include "host/filter/DocumentFit.h"

#include "host/module/EnableInfo.h"
#include "host/services/HostState.h"

namespace host {

// The first filter case of each kind; with a selection it is the next one.
struct CaseOfCounts {
    PlaneCounts counts;
    int firstCase;
};

static bool IsCaseTaken(const HostState &state, int firstCase) {
    const int filterCase = firstCase + (state.owner->document.mask.empty() ? 0 : 1);
    return !state.hasPipl || !state.pipl.hasFilterCases ||
           state.pipl.filterCases[filterCase - 1].inputHandling != kHandlingCannot;
}

// A filter that does not take a layer is shown one with protected transparency, then the colours alone.
std::optional<PlaneCounts> FindCounts(const HostState &state) {
    const PlaneCounts wanted = state.owner->settings.planeCounts;
    if (wanted != PlaneCounts::kAutomatic)
        return wanted;
    for (const CaseOfCounts &entry : {CaseOfCounts{PlaneCounts::kLayer, 4}, {PlaneCounts::kProtected, 6}})
        if (state.owner->document.hasTransparency && IsCaseTaken(state, entry.firstCase))
            return entry.counts;
    return IsCaseTaken(state, 1) ? std::optional(PlaneCounts::kFlat) : std::nullopt;
}

PlaneCounts ResolvedCounts(const HostState &state) {
    return FindCounts(state).value_or(PlaneCounts::kFlat);
}

int16_t ImageModeOf(const Document &document) {
    const bool isGrey = document.colourPlanes == 1;
    if (document.depth == 16)
        return isGrey ? 10 : 11;
    if (document.depth == 32)
        return isGrey ? 17 : 16;
    return isGrey ? 1 : 3;
}

bool IsDocumentTaken(const HostState &state, std::string *why) {
    if (!state.hasPipl)
        return true;
    const Document &document = state.owner->document;
    const ImageFacts facts = {ImageModeOf(document), document.depth, document.width, document.height,
                              document.colourPlanes};
    if (!TakesImage(state.pipl, facts, why))
        return false;
    if (FindCounts(state))
        return true;
    *why = document.mask.empty() ? "it takes no image of this kind of layer" : "it takes no selection";
    return false;
}

} // namespace host
