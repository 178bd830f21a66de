// The pixels of the scaled proxy: made from a planar image at any reduction, copied, and drawn at any zoom.
// Portable; no thread of its own.
//
// Below 100 % a store holds one pixel for each scaled one, the average of what it covers. From 100 % on it
// holds the image's own pixels, and the whole-pixel enlargement is made when it is drawn.
#pragma once

#include "engine/image/ImageBuffer.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

// One pixel is 0xAARRGGBB, in memory blue first. Alpha is 255, or 0 where nothing has been put yet.
struct PixelStore {
    IntRect bounds;   // pixels at `scale`
    double scale;     // percent of the image, up to 100
    uint32_t *pixels; // row by row; owned, FreeStore releases them; null: no store
    size_t bytes;
};

constexpr uint32_t kStoredAlpha = 0xFF000000;

// The scale that serves a zoom, and the pixels that serve a part of the scaled image.
double StoreScale(double zoom);
IntRect StoreBounds(const IntRect &scaledPart, double zoom);

// Empty of content. False, with *store unchanged, for an empty area or without memory.
bool AllocateStore(const IntRect &bounds, double scale, PixelStore *store);
void FreeStore(PixelStore *store);

// Fills the store from the image; what lies beside the image stays as it is. False when *cancel became
// non-zero or memory ran out; the content is then undefined.
bool FillStore(const ImageBuffer &image, const std::atomic<uint8_t> &cancel, PixelStore *store);

// Puts what `from` has at the places of `to`; pixels that it has not stay as they are. At another scale the
// nearest pixel is taken.
void CopyStore(const PixelStore &from, PixelStore *to);

// Draws a part of the scaled image at `zoom`, within the image, into rows of `stride` pixels (alpha
// undefined). Where the store has nothing, or is none, the image's pixel under the middle is shown instead.
void DrawStore(const PixelStore &store, const ImageBuffer &image, double zoom, const IntRect &part,
               uint32_t *pixels, int32_t stride);
