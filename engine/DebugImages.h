// The analysis image of the last run, kept for a diagnostic caller. Nothing is kept, and nothing of it takes
// time, unless it was asked for before the run.
#pragma once

#include "engine/image/PixelSample.h"

// Owner of everything in it: this module; FreeKeptImage releases it.
struct KeptImage {
    AnalysisImage image; // as detection first saw it; null samples: nothing is kept
    uint8_t *flat;       // a byte a pixel, not 0 where detection took the pixel out as part of a flat area
};

// Whether runs keep their analysis image. Written on the host's thread while no run is on.
extern bool gKeepAnalysisImage;

// Called by the run's task: before and after detection. Without memory nothing is kept.
void KeepAnalysisImage(const AnalysisImage &image);
void KeepFlatAreas(const AnalysisImage &image);

// Host's thread, while no run is on.
const KeptImage &GetKeptImage();
void FreeKeptImage();
