// Reduces a planar image for the screen by averaging areas, so that small lights neither vanish nor flicker.
// Portable.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "ui/pixels/PreviewStore.h"

#include <atomic>

// Fills a store of a scale below 100: each pixel becomes the mean of the image under it, partly covered
// pixels counting by their share (to 1/256). Otherwise as FillStore.
bool ReduceImage(const ImageBuffer &image, const std::atomic<uint8_t> &cancel, PixelStore *store);
