// One light source's stamp on its way into a band; what laying it by integers and by glow have in common.
#pragma once

#include "engine/image/Geometry.h"
#include "engine/image/ImageBuffer.h"
#include "render/rows/PixelBlender.h"
#include "render/rows/RenderPath.h"
#include "render/stamp/RoomMap.h"
#include "render/stamp/StarStamp.h"

#include <atomic>
#include <cstdint>

// Where a stamp goes: a pixel and the sub-pixel phase, each 0..3 quarter pixels.
struct StampPlace {
    int32_t x, y;
    int32_t px, py;
};

// Where and how a worker draws. Bands of one image that have no row in common may be drawn at the same time.
struct BandTarget {
    const StampContext &context;
    const ImageBuffer &output;
    IntRect band; // inside the output
    const std::atomic<uint8_t> &abort;
    BlendColor *colors; // the worker's own, kRainbowStates of them
    RoomMap *room;      // of the band, for what is laid by glow
};

// The least value of a stamp that can move a byte under a light source: one of full value moves it by `way`
// steps. Half a step, but for more than the glow is off.
inline double LeastGlow(float way) {
    constexpr double kLeastWay = 0.4995 * 0x1p32;
    constexpr float kNoWay = 1e-6f; // moves nothing
    return kLeastWay / (way > kNoWay ? way : kNoWay);
}

// Calls work(from, count) for each piece of a span.
template <typename Work> void ForEachPiece(int32_t from, int32_t to, Work work) {
    for (; from <= to; from += kRowPiece)
        work(from, to - from + 1 < kRowPiece ? to - from + 1 : kRowPiece);
}

struct Laying {
    const BandTarget &target;
    const StampPlace &place;
    const Tint &tint;
    IntRect window;         // the band, as offsets from the place
    uint32_t leastValue;    // smaller values cannot show
    uint32_t faintestValue; // the same for the brightest light source there could be
    bool glows;             // laid by glow
    BlendPiece blend;       // what is the same for all pieces
    GlowBatch glow;
    float planeStrength[3]; // of the light source's glow, by plane: 256 is full
    void (*blendPiece)(const BlendPiece &piece);
};

inline bool IsAborted(const Laying &laying) {
    return laying.target.abort.load(std::memory_order_relaxed) != 0;
}

// The sample at an offset from the place, in the first plane; and how many belong to its row from there on.
struct SamplePlace {
    int64_t index;
    int32_t room;
};
inline SamplePlace FindSample(const Laying &laying, int32_t row, int32_t from) {
    const ImageBuffer &output = laying.target.output;
    const int64_t y = int64_t{laying.place.y} + row - output.bounds.top;
    const int64_t x = int64_t{laying.place.x} + from - output.bounds.left;
    return {y * output.width + x, static_cast<int32_t>(output.width - x)};
}
