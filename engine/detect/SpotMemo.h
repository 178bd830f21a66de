// What a worker remembers of the pixels it has measured. Inside a wide bright spot every pixel is a
// candidate, and its way to the spot's centre leads over the same few pixels again and again; what a profile
// says depends on nothing but the picture, so it is measured once for each pixel and each state of the
// picture.
#pragma once

#include "engine/detect/Detection.h"
#include "engine/detect/RadialProfile.h"
#include "engine/image/AnalysisImage.h"

// One pixel. Good only while `state` is the picture's.
struct MeasuredPixel {
    uint32_t state;
    int32_t dx : 12, dy : 12; // the step towards the centre that the profile points to; 0, 0: it stays
    uint32_t hasCenter : 1;   // else the profile points nowhere
    uint32_t isRefused : 1;   // the spot here is no light source
};
static_assert(sizeof(MeasuredPixel) == 8 && kAnalysisLongerSide + 2 < 2048);

// Gives the worker its memo in `spare`. Without the memory for it everything is measured each time.
void AttachSpotMemo(WorkerContext *worker);

// The entry of a pixel inside the bounds; null without a memo.
MeasuredPixel *MemoEntry(const WorkerContext &worker, int32_t x, int32_t y);

// The last profile measured, as it was before anything in it was replaced: what recentring ends with is what
// the analysis begins with.
void RememberProfile(const WorkerContext &worker, int32_t x, int32_t y, uint32_t state,
                     const RadialProfile &profile);
// False when it is not the one of this pixel and state; *profile is then left alone.
bool RecallProfile(const WorkerContext &worker, int32_t x, int32_t y, uint32_t state, RadialProfile *profile);
