// Filling a store from an image of any depth. Portable.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "ui/pixels/PreviewStore.h"

#include <atomic>

// Fills the store from the image; what lies beside the image stays as it is. False when *cancel became
// non-zero or memory ran out; the content is then undefined.
bool FillStore(const ImageBuffer &image, const std::atomic<uint8_t> &cancel, PixelStore *store);
