// The system's region objects with the checks and reports that the preview needs. Any thread, but a region is
// used by one thread at a time.
#pragma once

#include "engine/image/Geometry.h"

#include <cstdint>
#include <windows.h>

// What is reported when a step fails: the site code and the text.
struct RegionStep {
    uint32_t site;
    const char *text;
};

// An empty region; null and a report on failure.
HRGN CreateRegion(const RegionStep &step);
void DeleteRegion(HRGN *region);

// Each of these leaves *region as it was and reports when it fails.
bool SetRegionRect(HRGN region, const IntRect &rect, const RegionStep &step);
bool CombineRegions(HRGN region, HRGN a, HRGN b, int mode, const RegionStep &step);

// False for a null region too.
bool IsRegionFilled(HRGN region);
// The smallest rectangle around a region; all zero for an empty or null one.
IntRect RegionBox(HRGN region);
// Whether every pixel of `inner` lies in `outer`. Without memory the answer is yes: it is for checks.
bool RegionHolds(HRGN outer, HRGN inner);

// The rectangles of a region: disjoint, from top to bottom, in a row from left to right.
struct RegionRects {
    const RECT *rects;
    uint32_t count;
    void *data; // owned; FreeRegionRects releases it
    size_t bytes;
};
// False, with *rects unchanged, for a null region or without memory.
bool GetRegionRects(HRGN region, RegionRects *rects);
void FreeRegionRects(RegionRects *rects);

// A new region of every rectangle as ScaleRect makes it, or as UnscaleRect does. Null on failure.
HRGN ScaleRegion(HRGN region, double zoom);
HRGN UnscaleRegion(HRGN region, double zoom);
