#include "render/rows/BlendPortable.h"

#include "engine/image/FixedPoint.h"
#include "engine/image/ImageBuffer.h"

namespace {

constexpr uint32_t kFullStrength = 1u << 24; // strengths from here on are opaque

uint32_t WorkingFromSample(uint8_t sample) {
    return WorkingFrom8(sample);
}
uint32_t WorkingFromSample(uint16_t sample) {
    return WorkingFrom16(sample);
}
uint32_t WorkingFromSample(float sample) {
    return WorkingFromFloat(sample);
}

void StoreWorking(uint32_t working, uint8_t *sample) {
    *sample = WorkingTo8(working);
}
// The nearest of the 32769 values: a sample is 512 working values less a 32768th, and no tie can occur.
void StoreWorking(uint32_t working, uint16_t *sample) {
    *sample = static_cast<uint16_t>((working + 256) >> 9);
}
// A highlight of full scale or above stays as it is: a star never darkens it.
void StoreWorking(uint32_t working, float *sample) {
    if (!(*sample >= 1.0f))
        *sample = WorkingToFloat(working);
}

template <bool precise> uint32_t MulAs(uint32_t nearOne, uint32_t small) {
    return precise ? MulPrecise(nearOne, small) : MulFast(nearOne, small);
}

// The mix, by alpha, of a channel and its screen with the colour.
template <bool precise> uint32_t ScreenChannel(uint32_t old, uint32_t inverse, uint32_t alpha) {
    const uint32_t left = MulAs<precise>(inverse, kFullIntensity - old);
    return MulAs<precise>(alpha, kFullIntensity - left) + MulAs<precise>(kFractionOne - alpha, old);
}

template <typename Sample, bool precise, int32_t planes>
void BlendPixelInto(const BlendPiece &piece, int32_t i, const BlendColor &color, uint32_t alpha) {
    if constexpr (planes == 1) {
        Sample *sample = static_cast<Sample *>(piece.samples[0]) + i;
        const uint32_t old = WorkingFromSample(*sample);
        const uint32_t sum = ScreenChannel<precise>(old, color.inverse[0], alpha) +
                             ScreenChannel<precise>(old, color.inverse[1], alpha) +
                             ScreenChannel<precise>(old, color.inverse[2], alpha);
        StoreWorking(sum / 3, sample);
    } else {
        for (int32_t plane = 0; plane < planes; ++plane) {
            Sample *sample = static_cast<Sample *>(piece.samples[plane]) + i;
            StoreWorking(ScreenChannel<precise>(WorkingFromSample(*sample), color.inverse[plane], alpha),
                         sample);
        }
    }
}

template <typename Sample, bool precise, int32_t planes> void BlendAs(const BlendPiece &piece) {
    for (int32_t i = 0; i < piece.count; ++i) {
        const BlendColor &color = piece.colors[piece.states ? piece.states[i] : 0];
        const uint32_t strength =
            MulAs<precise>(color.largest, MulAs<precise>(piece.tintValue, piece.values[i]));
        if (strength < piece.threshold)
            continue;
        const uint32_t alpha = strength < kFullStrength ? strength * 256 : kFractionOne;
        BlendPixelInto<Sample, precise, planes>(piece, i, color, alpha);
    }
}

template <typename Sample> void BlendDepth(const BlendPiece &piece) {
    if (piece.precise)
        piece.planes == 1 ? BlendAs<Sample, true, 1>(piece) : BlendAs<Sample, true, 3>(piece);
    else
        piece.planes == 1 ? BlendAs<Sample, false, 1>(piece) : BlendAs<Sample, false, 3>(piece);
}

} // namespace

void BlendPortableBytes(const BlendPiece &piece) {
    BlendDepth<uint8_t>(piece);
}
void BlendPortableWords(const BlendPiece &piece) {
    BlendDepth<uint16_t>(piece);
}
void BlendPortableFloats(const BlendPiece &piece) {
    BlendDepth<float>(piece);
}
