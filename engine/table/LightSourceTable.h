// The list of light sources found in the image: adding, merging, ranking, hiding, and the text of the viewer.
#pragma once

#include "diag/ResultCodes.h"
#include "engine/image/AnalysisImage.h"
#include "engine/image/Geometry.h"

#include <atomic>
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

// The one global table. Written by the initialization task after its workers have ended; read by other
// threads only after the task's completion event. Hide Effects changes it on the dialog's thread.
extern LightSourceTable *gLightSourceTable;

// Adds a source by the add rule: an exact duplicate or an overlapped smaller source is silently not added.
// Returns kNoError, or kMemFullErr when the table cannot grow (it is then unchanged).
HostResult AddLightSource(LightSourceTable *table, const LightSourcePosition &position, float radiusSquared,
                          uint32_t red, uint32_t green, uint32_t blue, bool enabled);
// Whether a pixel lies within a source of the table: its distance from the centre, quarters left aside, is
// not above the radius.
bool IsInsideLightSource(const LightSourceTable &table, int32_t x, int32_t y);
// Adds the worker's selected, normal sources to the global table, scaled to document pixels. Stops early when
// *tableCancel is set.
HostResult MergeWorkerTable(const LightSourceTable &workerTable, const AnalysisImage &image,
                            const std::atomic<uint8_t> &tableCancel);
// Normalises the colours, sets Brightness and sorts the global table, brightest first; equal ones keep their
// order. Does nothing when *tableCancel is set at the start.
void RankLightSources(const std::atomic<uint8_t> &tableCancel);

struct LightSourceTableView {
    LightSource *records;
    uint32_t count;
};
LightSourceTableView GetLightSourceTable();

void FreeTableRecords(LightSourceTable *table);

// Threshold in percent to the brightness cut level; 100 and above cut nothing.
uint32_t ThresholdCutLevel(int32_t threshold);
// Whether a source gets a star at a cut level: forced, or normal and strictly brighter.
inline bool IsLightSourceSelected(const LightSource &source, uint32_t cutLevel) {
    return source.State == 2 || (source.State == 1 && source.Brightness > cutLevel);
}

// Hide Effects modes.
constexpr int32_t kHideEffect = 0, kRestoreHidden = 1, kForceEffect = 2, kRestoreForced = 3;
// The nearest eligible source within reach of the point (document pixels), the first in the table of several;
// -1 when none is close enough.
int32_t FindLightSourceAt(int32_t x, int32_t y, double zoomPercent, int32_t mode);
// Whether the mode would make a difference; false for a source that is not eligible.
bool IsChangedByMode(const LightSource &source, int32_t mode);
// Applies the mode to what FindLightSourceAt finds, and returns that.
int32_t SetLightSourceStateAt(int32_t x, int32_t y, double zoomPercent, int32_t mode);
// Changes every eligible source whose (X, Y) lies in the rectangle. Returns how many changed.
int32_t SetLightSourceStatesInRect(const IntRect &rect, int32_t mode);

// The viewer's text, a line a call: first = true restarts and gives the count line, then one line a source,
// then null. The text stays valid until the next call. One thread at a time.
const char *FormatLightSourceTableLine(bool first);
