// The pixels of the scaled proxy: what they are, and copies of them. Portable; no thread of its own.
//
// Below 100 % a store holds one pixel for each scaled one, the average of what it covers. From 100 % on it
// holds the image's own pixels, and the whole-pixel enlargement is made when it is drawn.
#pragma once

#include "engine/image/Geometry.h"

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

inline size_t StoreWidth(const PixelStore &store) {
    return static_cast<size_t>(store.bounds.right - store.bounds.left);
}
// The pixel of column x in row y; both lie in the bounds.
inline uint32_t *PixelAt(const PixelStore &store, int32_t x, int32_t y) {
    return store.pixels + static_cast<size_t>(y - store.bounds.top) * StoreWidth(store) +
           static_cast<size_t>(x - store.bounds.left);
}

constexpr uint32_t kStoredAlpha = 0xFF000000;

inline const std::atomic<uint8_t> kNeverCancelled{0};

// The scale that serves a zoom, and the pixels that serve a part of the scaled image.
double StoreScale(double zoom);
IntRect StoreBounds(const IntRect &scaledPart, double zoom);

// Empty of content. False, with *store unchanged, for an empty area or without memory.
bool AllocateStore(const IntRect &bounds, double scale, PixelStore *store);
void FreeStore(PixelStore *store);

// Puts what `from` has at the places of `to`; pixels that it has not stay as they are. At another scale the
// nearest pixel is taken.
void CopyStore(const PixelStore &from, PixelStore *to);
// The same at another scale in a part of `to`. False when *cancel became non-zero.
bool ResampleStore(const PixelStore &from, const IntRect &part, const std::atomic<uint8_t> &cancel,
                   PixelStore *to);
