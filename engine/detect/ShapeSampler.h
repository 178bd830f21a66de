// Mean, deviation and mean colour of the analysis image over disks and rings around a quarter-pixel position.
#pragma once

#include "engine/detect/BandPicture.h"
#include "engine/table/LightSource.h"

#include <cstddef>
#include <cstdint>

constexpr int32_t kShapeCount = 384;       // radii 0, 0.25, 0.5 ... 95.75 pixels
constexpr float kShapeRadiusStep = 0.25f;  // so index i holds i × 0.25
constexpr int32_t kSubShapesPerShape = 16; // quarter-pixel phases of the centre: x quarter + 4 × y quarter

// Pixels of one row that belong to a shape, as offsets from the centre's whole pixel; `right` is exclusive.
struct ShapeRun {
    int16_t dy, left, right;
};

// The pixels of a shape for one phase: runs from top to bottom, left to right. Made when first needed.
// Owner of `runs`: the shape record; FreeShapeRecord releases them.
struct SubShape {
    ShapeRun *runs;
    size_t allocatedBytes;
    uint32_t runCount;
    uint32_t pixelCount;
    IntRect box; // holds every pixel, as offsets
};
static_assert(sizeof(SubShape) == 40);

struct ShapeStatistics {
    double mean, deviation; // of pixel brightness; population deviation
};

// A disk or a ring of one radius. `sample` is false when it cannot measure: no pixel of the shape lies inside
// the bounds; *out is then left alone. A record is used by one thread only.
struct ShapeRecord {
    SubShape subShapes[kSubShapesPerShape];
    bool (*sample)(ShapeRecord *shape, const BandPicture &image, const LightSourcePosition &center,
                   ShapeStatistics *out);
    const float *radius; // in pixels, a multiple of 0.25
};
static_assert(sizeof(ShapeRecord) == 656);

// The sampling operations of a record.
bool SampleDisk(ShapeRecord *shape, const BandPicture &image, const LightSourcePosition &center,
                ShapeStatistics *out);
bool SampleRing(ShapeRecord *shape, const BandPicture &image, const LightSourcePosition &center,
                ShapeStatistics *out);

// Mean red, green and blue over a ring, truncated; false as for `sample`.
bool SampleRingColor(ShapeRecord *shape, const BandPicture &image, const LightSourcePosition &center,
                     uint32_t color[3]);

// How much a shape's brightness stands out: mean − 2 × deviation, never below 0.
double ShapeContrast(const ShapeStatistics &statistics);

void FreeShapeRecord(ShapeRecord *shape);
