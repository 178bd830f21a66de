// Builds the light source table on the calling thread: for tests and benchmarks.
#pragma once

#include "engine/image/ImageBuffer.h"

#include <atomic>
#include <cstdint>

// Builds the global table of `image` afresh as the background task does, but runs the workers (1..4 of them)
// one after another. Returns kNoError, or the failure, or kUserCanceledErr when *cancel was set; the table is
// then partial or empty and not ranked.
HostResult BuildLightSourceTable(const ImageBuffer &image, int workers, const std::atomic<uint8_t> &cancel);
