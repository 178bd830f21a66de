// The image that detection looks at: a copy of the filtered area, reduced so that its longer side is at most
// 1200 pixels. It is always a copy of its own: marking a flat area never touches the picture.
#pragma once

#include "diag/ResultCodes.h"
#include "engine/image/ImageBuffer.h"
#include "engine/image/PixelSample.h"
#include "engine/image/WorkerThreads.h"

#include <atomic>
#include <cstdint>

constexpr int32_t kAnalysisLongerSide = 1200;

// Builds the analysis image of `source` (bounds, samples, maxBrightness). A reduction stops when *cancel
// becomes non-zero; the `threads` share it. Returns kNoError, kUserCanceledErr or kParamErr; on failure *out
// is left alone.
HostResult PrepareAnalysisImage(const ImageBuffer &source, const std::atomic<uint8_t> &cancel,
                                AnalysisImage *out, const WorkerThreads &threads = kThisThreadOnly);
void FreeAnalysisImage(AnalysisImage *image);

// What a pixel that is taken out of detection becomes: white, covered, not selected.
constexpr PixelSample kMarkedSample = {0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0};
// No other thread may use the image meanwhile.
void MarkPixel(AnalysisImage *image, int32_t x, int32_t y);
