// The yardstick's detection: one band after another, each pixel measured from scratch.
#pragma once

#include "engine/detect/BandScan.h"
#include "tests/reference/detect/ReferenceTable.h"

#include <cstdint>
#include <vector>

namespace reference {

// The quarter-pixel position of a centre.
struct Centre {
    int64_t x, xQuarter, y, yQuarter;
};

// Radii in the eight directions: E, SE, S, SW, W, NW, N, NE; -1 where no edge was found.
struct Profile {
    float radius[8];
};

struct Band {
    int64_t top, bottom;
};
std::vector<Band> SplitBands(const IntRect &bounds, int32_t workers);

// Scans one band into a table of its own. Flat areas are marked in the analysis image.
Table ScanBand(Analysis *analysis, const Band &band);

// The whole ranked table of a picture, its bands scanned one after another.
Table BuildTable(const ImageBuffer &image, int32_t workers);

} // namespace reference
