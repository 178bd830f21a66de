// The renderer's inner loops: pixels of one row of an arm or a flare, and their blending. There are two forms
// of each, with the same integers: a portable one and one for processors with AVX2.
#pragma once

#include "render/shape/ArmSpan.h"
#include "render/shape/Rainbow.h"
#include "render/shape/SoftFlare.h"

#include <cstdint>

// Rows are worked on in pieces of at most this many pixels. Buffers for them have room for eight more.
constexpr int32_t kRowPiece = 512;
constexpr int32_t kRowRoom = kRowPiece + 8;

// Colour factors as fractions.
struct alignas(16) GlowFactors {
    float factor[3]; // for red, green, blue
};

// A piece of one row of an arm: `count` pixels from `from` on, as offsets from the source's pixel.
struct ArmPiece {
    const Arm *arm;
    const uint16_t *stateOfDistance; // one more than the arm's values
    bool precise;
    int32_t row, from, count;
};

// How the glow finds the rainbow's states.
struct GlowRainbow {
    double phasesPerDistance;
    const GlowFactors *factors;  // by state
    const StampContext *context; // for distances at which a phase may or may not be over
};

// The same for glow, which needs no tables.
struct GlowPiece {
    const Arm *arm;
    const GlowRainbow *rainbow; // null: there is none, all factors are 1.0
    int32_t row, from, count;
};

struct FlarePiece {
    const FlareStamp *flare;
    const ValueTable *values;
    int32_t row, from, count;
};

// A light source's colour at one state of the rainbow, as the blend needs it.
struct BlendColor {
    uint32_t largest;    // of the tinted channels
    uint32_t inverse[3]; // 1.0 less the channel as a share of the largest
};

// The colours of a light source at `count` states of the rainbow.
struct ColorPiece {
    const RainbowFactors *factors; // of these states
    uint32_t count;
    const uint32_t *tint; // of the light source: three fractions
    bool precise;
};

// A row of values to be blended into samples side by side.
struct BlendPiece {
    const uint32_t *values;
    const uint16_t *states; // of each value; null: all have state 0
    int32_t count;
    int32_t room;             // samples from the first on that belong to the same row; at least `count`
    const BlendColor *colors; // by state
    uint32_t tintValue;       // strength of the light source, a fraction
    uint32_t leastValue;      // smaller values do not reach the threshold in any colour
    uint32_t threshold;       // products of colour and value below it are not drawn; at least 1
    bool precise;
    int32_t planes;   // 1 (grey) or 3
    void *samples[3]; // the row's first sample in each plane
};

// --- Glow ------------------------------------------------------------------------------------------------
// A shorter way for bytes in precise mode. What a pixel of a stamp lays, apart from the light source, is its
// glow in each channel: value times rainbow factor, as floats. Times the light source's colour and strength
// it is the part by which a byte moves toward white. The integers' own roundings and the floats' move a byte
// by less than kGlowMargin steps and kGlowError of the way: where the sum lies nearer to half a step, the
// pixel is named instead of blended, and is then to be blended by the integers. So the bytes are the same.
constexpr float kGlowMargin = 2e-4f, kGlowError = 5e-6f;
// A phase of the rainbow is over, or not, where so little of it is left or gone: worked out in its own order.
constexpr double kPhaseDoubt = 1e-6;

// Rows of glow to be laid into bytes. They come in batches: most are short.
constexpr int32_t kBatchRows = 64, kBatchPixels = 1024;
struct GlowRow {
    const float *glow;   // of the first channel
    int32_t step;        // values from one channel to the next
    int32_t count, room; // as above; at most kRowPiece
    int64_t sample;      // index of the first sample in each plane
};
struct GlowBatch {
    const GlowRow *rows;
    int32_t count;       // at most kBatchRows, with at most kBatchPixels pixels
    float strength[3];   // of the light source, by channel: 256 is full
    int32_t planes;      // 1 (grey) or 3
    uint8_t *samples[3]; // each plane's first
};
struct LeftPixel {
    uint16_t row, pixel; // of the batch, of the row
};

// The functions write up to seven values past `count`, and a blend may rewrite samples past it, inside
// `room`, with what they are. Pieces of different rows may be worked on at the same time. Glow is written
// without a value too many.
struct RenderPath {
    const char *name;
    void (*fillArm)(const ArmPiece &piece, uint32_t *values, uint16_t *states);
    void (*fillFlare)(const FlarePiece &piece, uint32_t *values);
    void (*makeColors)(const ColorPiece &piece, BlendColor *colors);
    void (*blend[3])(const BlendPiece &piece); // samples of 1, 2 and 4 bytes
    // Null where the path has no glow. Without a rainbow one channel is filled.
    void (*fillArmGlow)(const GlowPiece &piece, float *const glow[3]);
    void (*fillFlareGlow)(const FlarePiece &piece, float *glow);
    // Returns how many pixels are left to the integers, and lists them.
    int32_t (*blendGlow)(const GlowBatch &batch, LeftPixel *left);
};
