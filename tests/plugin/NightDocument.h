// Documents with lights in them, and what the filter must make of them: the engine and the renderer called
// directly, in one piece, on the same samples.
#pragma once

#include "host/services/Descriptor.h"
#include "host/services/Document.h"
#include "render/ParameterSet.h"

#include <cstdint>
#include <vector>

struct NightPicture {
    int32_t width = 240, height = 180;
    int32_t depth = 8;
    int32_t colourPlanes = 3;
    bool hasTransparency = false;
    int32_t lights = 6;
};
host::Document MakeNight(const NightPicture &picture);

// The document after a run with these parameters over `area` (document coordinates).
host::Document FilteredNight(const host::Document &document, const ParameterSet &parameters,
                             const host::Rectangle &area);
inline host::Document FilteredNight(const host::Document &document, const ParameterSet &parameters) {
    return FilteredNight(document, parameters, {0, 0, document.width, document.height});
}

// Samples of all planes that differ.
int64_t DifferentSamples(const host::Document &a, const host::Document &b);

// All 13 keys of a set, as a script would give them.
host::Descriptor ScriptOf(const ParameterSet &set);
