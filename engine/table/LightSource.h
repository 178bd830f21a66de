// A light source, and the record of a list of them.
#pragma once

#include <cstddef>
#include <cstdint>

struct LightSource {
    int32_t X, XQuarter; // centre: whole pixels plus quarters 0..3
    int32_t Y, YQuarter;
    int32_t RadiusSquared; // in whole pixels squared
    uint32_t Brightness;   // fraction; the ranking key, set by RankLightSources
    uint32_t Red, Green, Blue;
    uint32_t Intensity;  // fraction; 0xFFFFFFFE on creation
    int32_t Aux;         // -1 on creation; not read by the engine
    uint32_t State;      // 0 hidden or not selected, 1 normal, 2 always gets a star
    uint32_t SavedState; // State before the last Hide Effects change
};
static_assert(sizeof(LightSource) == 52);

struct LightSourcePosition {
    int32_t X, XQuarter, Y, YQuarter;
};

struct LightSourceGrid;

// Owner of `records` and `grid`: the table; FreeTableRecords releases them.
struct LightSourceTable {
    uint32_t Count;
    LightSource *records;
    size_t allocatedBytes;
    LightSourceGrid
        *grid; // finds sources near a point while the table is filled; null: every source is looked at
};

struct LightSourceTableView {
    LightSource *records;
    uint32_t count;
};

// Whether a source gets a star at a cut level: forced, or normal and strictly brighter.
inline bool IsLightSourceSelected(const LightSource &source, uint32_t cutLevel) {
    return source.State == 2 || (source.State == 1 && source.Brightness > cutLevel);
}

// The two states of a source in one byte, and back.
inline uint8_t PackLightState(const LightSource &source) {
    return static_cast<uint8_t>(source.State | source.SavedState << 4);
}
inline void UnpackLightState(uint8_t packed, LightSource *source) {
    source->State = packed & 15u;
    source->SavedState = packed >> 4;
}
