// Light source detection: one worker scans one horizontal band of the analysis image and collects what it
// finds in a table of its own. Tables and marks are those of the bands scanned one after another, from the
// first to the last, on one picture. Several workers scan ahead at once: each takes over what earlier bands
// mark meanwhile, and goes back to the first row that a mark came too late for (AheadScan.h).
#pragma once

#include "diag/ResultCodes.h"
#include "engine/detect/BandPicture.h"
#include "engine/detect/Bands.h"
#include "engine/detect/ShapeSampler.h"
#include "engine/image/PixelSample.h"
#include "engine/table/LightSource.h"

#include <atomic>
#include <cstdint>

// Guards marking: the picture's samples, or the logs of what is marked ahead. Null functions: nothing to
// guard, the workers run one after another.
struct ImageLock {
    void (*lock)(void *owner);
    void (*unlock)(void *owner);
    void *owner;
};

struct WorkerContext;

// What the workers of one run share. The image is read without a lock; while several workers run it stays as
// it is, and each worker's marks are published in its log.
struct DetectionShared {
    AnalysisImage image;
    const std::atomic<uint8_t> *cancel; // polled between pixels; only ever goes from 0 to 1 during a run
    ImageLock imageLock;
    std::atomic<uint32_t> rowsDone;  // `RowsDone`: rows that the workers have finished
    std::atomic<uint32_t> rowsTotal; // `RowsTotal`: rows of the analysis image
    WorkerContext *workers;          // in the order of their bands; null where there is but one
    int32_t workerCount;
    std::atomic<uint32_t> news; // changes with every log; written under imageLock
};

// A light as it was handed to the worker's table.
struct FoundLight {
    LightSourcePosition position;
    float radiusSquared;
    uint32_t levels[3];
    bool enabled;
};

// How far a scan had come when it began with a row of its band.
struct RowStart {
    uint32_t lights; // found
    size_t runs;     // of its own log
};

// What a worker took over of an earlier band's log.
struct TakenMarks {
    MarkLog log;
    size_t shown; // of its runs, as far as they lie in the window
    uint32_t rewinds;
};

// A scan of one band while earlier bands are still being scanned. Owner of what it points to;
// ReleaseAheadScan frees it.
struct AheadScan {
    bool wasStarted;  // written under imageLock, as the next
    bool isAtWork;    // some thread scans it
    int64_t rowsLeft; // to scan ahead, see BandScan.cpp
    int32_t row;      // the next one to scan, or the one at hand
    int32_t outdated; // the first row whose scan saw what is no longer so; kNoRow: none
    uint32_t rewinds; // each takes marks back; written under imageLock
    RowRange window;  // marks of earlier bands are shown in these rows
    uint32_t seenNews;
    TakenMarks taken[kMaxWorkers - 1];
    MarkLog withdrawn; // marks that earlier bands have taken back, still shown
    RowStart *starts;  // one for each row of the band
    int32_t
        *firstLook; // for each row of the picture the first of the band whose scan looked there, or kNoRow
    size_t startBytes, lookBytes;
    FoundLight *lights; // in the order in which they were found
    uint32_t lightCount;
    size_t lightBytes;
};
constexpr int32_t kNoRow = INT32_MAX;

// One worker. Owned by the run that made it; used by one thread at a time.
struct WorkerContext {
    float *DiskParamsBuff; // radii in pixels, kShapeCount of them; so is the next
    size_t diskParamsBytes;
    float *RingParamsBuff;
    size_t ringParamsBytes;
    ShapeRecord *DiskShapeBuff; // kShapeCount records; so is the next
    size_t diskShapeBytes;
    ShapeRecord *RingShapeBuff;
    size_t ringShapeBytes;
    IntRect band; // rows top inclusive to bottom exclusive; may be empty or reach past the image
    ShapeRecord *disks;
    int32_t diskCount;
    ShapeRecord *rings;
    int32_t ringCount;
    int32_t nextRow; // rows above it are counted as done
    BandPicture picture;
    AheadScan ahead;
    LightSourceTable table;
    void *terminationEvent; // set when the worker ends; null where workers have no threads
    void *spare;            // the worker's memo (SpotMemo.h), or null; freed at clean-up
    size_t spareBytes;
    uint32_t index;
    DetectionShared *shared;
    HostResult result; // kMemFullErr when an allocation failed on the way
};
