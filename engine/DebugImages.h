// The analysis image of the last run, kept for a diagnostic caller, and the pictures made of it. Nothing is
// kept, and nothing of it takes time, unless it was asked for before the run.
#pragma once

#include "engine/image/AnalysisImage.h"
#include "engine/table/LightSourceTable.h"

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

// The pictures have the size of the kept image; something must be kept. `bgra` has four bytes for each pixel,
// from the top row down: blue, green, red, 255.
void DrawAnalysisPicture(const KeptImage &kept, uint8_t *bgra);
// The same: red where it is not selected, blue where it is not covered, striped green on flat areas.
void DrawShadedPicture(const KeptImage &kept, uint8_t *bgra);
// The lights as circles of their radius and colour on the darkened picture: dashed when hidden, grey when
// their brightness is below the cut and nothing else gives them a star. Lights are in document pixels.
void DrawLightsPicture(const KeptImage &kept, const LightSourceTableView &lights, uint32_t cutLevel,
                       uint8_t *bgra);
