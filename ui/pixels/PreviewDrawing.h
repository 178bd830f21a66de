// Drawing a store, and samples of the image where it has nothing, at any zoom. Portable.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "ui/pixels/PreviewStore.h"

// Draws a part of the scaled image at `zoom`, within the image, into rows of `stride` pixels (alpha
// undefined). Where the store has nothing, or is none, the image's pixel under the middle is shown instead,
// or black when the image is not to be seen.
void DrawStore(const PixelStore &store, const ImageBuffer &image, bool showsImage, double zoom,
               const IntRect &part, uint32_t *pixels, int32_t stride);

// Draws over that what the store has of the part, and leaves the rest alone.
void OverlayStore(const PixelStore &store, const ImageBuffer &image, double zoom, const IntRect &part,
                  uint32_t *pixels, int32_t stride);
