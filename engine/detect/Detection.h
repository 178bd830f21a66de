// Light source detection: one worker scans one horizontal band of the analysis image and collects what it
// finds in a table of its own.
#pragma once

#include "engine/detect/ShapeSampler.h"
#include "engine/image/AnalysisImage.h"
#include "engine/table/LightSourceTable.h"

#include <atomic>
#include <cstdint>

// Guards writes to the analysis image. Null functions: nothing to guard, the workers run one after another.
struct ImageLock {
    void (*lock)(void *owner);
    void (*unlock)(void *owner);
    void *owner;
};

// What the workers of one run share. The image is read without a lock and written under imageLock.
struct DetectionShared {
    AnalysisImage image;
    const std::atomic<uint8_t> *cancel; // polled between pixels; only ever goes from 0 to 1 during a run
    ImageLock imageLock;
    std::atomic<uint32_t> rowsDone;  // `RowsDone`: rows that the workers have finished
    std::atomic<uint32_t> rowsTotal; // `RowsTotal`: rows of the analysis image
    std::atomic<uint32_t> fills;     // flat areas that have been marked
};

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
    LightSourceTable table;
    void *terminationEvent; // set when the worker ends; null where workers have no threads
    void *spare;            // the worker's memo (SpotMemo.h), or null; freed at clean-up
    size_t spareBytes;
    uint32_t index;
    DetectionShared *shared;
    HostResult result; // kMemFullErr when an allocation failed on the way
};

// Scans the worker's band until its end or until the run is cancelled. Any thread.
void ScanBand(WorkerContext *worker);
