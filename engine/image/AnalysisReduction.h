// Reads an image buffer as pixel samples, and reduces it to the analysis image by exact area average.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "engine/image/PixelSample.h"
#include "engine/image/WorkerThreads.h"

#include <atomic>
#include <cstdint>

// Reads the pixels of document row y into `row`, buffer.width of them.
void ReadSampleRow(const ImageBuffer &buffer, int32_t y, PixelSample *row);

uint32_t LargestBrightness(const PixelSample *row, int32_t width);

// Fills image->samples (allocated for image->bounds) with the averages of `source` at image->scale, and sets
// image->maxBrightness. Returns
// kNoError, kUserCanceledErr when *cancel became non-zero, or kParamErr when memory ran out. The
// `threads` share the rows; none of them runs any more on return.
HostResult ReduceToAnalysisImage(const ImageBuffer &source, const std::atomic<uint8_t> &cancel,
                                 AnalysisImage *image, const WorkerThreads &threads);
