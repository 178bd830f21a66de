// The glow's loops, for processors with wide registers: a form for each width, made from a set of operations
// (`Lanes`). For the files that define such a set; all of it is their own, so that no copy compiled for one
// processor can stand in for another's. Nothing else that is defined in a header is called here.
#pragma once

#include "diag/Compiler.h"
#include "render/rows/RowLoops.h"
#include "render/shape/FixedPower.h"

#include <immintrin.h>

namespace {

constexpr int32_t kGlowStep = 4; // one pixel, in quarter pixels
constexpr float kHalfFraction = 0x1p-31f;
constexpr float kLeastCoverage = 0x1p-60f; // of a power; no coverage above 0 is smaller

// Coverage^1.6 to 2^-22: the mantissa's power as a series about 1.5, the octave's from a table.
template <typename Lanes> typename Lanes::Floats GlowShare(typename Lanes::Floats coverage) {
    constexpr float kTerms[] = {1.91313672f, 2.0406785f,      0.408139646f,  -0.0362546407f,
                                0.0084165f,  -0.00290489197f, 0.00121324812f};
    const auto bits = Lanes::BitsOf(Lanes::Most(coverage, Lanes::All(kLeastCoverage)));
    const auto octave =
        Lanes::Gather(gShareOfOctave, Lanes::Minus(Lanes::ShiftRight(bits, 23), 127 + kFirstOctave));
    const auto u = Lanes::Minus(Lanes::MantissaOf(bits), Lanes::All(1.5f));
    auto series = Lanes::All(kTerms[6]);
    for (int32_t i = 5; i >= 0; --i)
        series = Lanes::TimesPlus(series, u, Lanes::All(kTerms[i]));
    return Lanes::WherePositive(coverage, Lanes::Times(octave, series));
}

template <typename Lanes, bool majorIsY>
typename Lanes::Doubles GlowCoverage(const Arm &arm, typename Lanes::Doubles x, double y) {
    const auto row = Lanes::AllDoubles(y);
    const auto major = majorIsY ? row : x, minor = majorIsY ? x : row;
    const auto centre =
        Lanes::TimesPlus(Lanes::AllDoubles(arm.slope), major, Lanes::AllDoubles(arm.crossing));
    // Both edges at once: a half and what the distance from the centre line leaves of the half width.
    const auto inside =
        Lanes::Minus(Lanes::AllDoubles(arm.halfWidth), Lanes::SizeOf(Lanes::Minus(centre, minor)));
    const auto edge =
        Lanes::TimesPlus(inside, Lanes::AllDoubles(0.25 * arm.edgeSlope), Lanes::AllDoubles(0.5));
    return Lanes::Least(edge, Lanes::AllDoubles(1.0));
}

// Values along the arm or the flare, as fractions, and the distances that they are for.
template <typename Lanes>
typename Lanes::Integers GlowDistances(typename Lanes::Doubles dx1, typename Lanes::Doubles dx2, double dy,
                                       uint32_t count) {
    const auto squared = Lanes::AllDoubles(dy * dy);
    return Lanes::AtMost(Lanes::Join(Lanes::DistanceOf(Lanes::TimesPlus(dx1, dx1, squared)),
                                     Lanes::DistanceOf(Lanes::TimesPlus(dx2, dx2, squared))),
                         count - 1);
}
template <typename Lanes>
typename Lanes::Floats GlowAlong(const uint32_t *values, typename Lanes::Integers distances) {
    return Lanes::Times(Lanes::ToFloats(Lanes::ShiftRight(Lanes::Gather(values, distances), 1)),
                        Lanes::All(kHalfFraction));
}

template <typename Lanes, bool majorIsY>
void FillArmGlowAs(const ArmPiece &piece, const GlowFactors *factors, float *const glow[3]) {
    const Arm &arm = *piece.arm;
    const int32_t px = majorIsY ? arm.minorPhase : arm.majorPhase,
                  py = majorIsY ? arm.majorPhase : arm.minorPhase;
    const double y = piece.row * kGlowStep;
    const auto phase = Lanes::AllDoubles(px);
    for (int32_t i = 0; i < piece.count; i += Lanes::kCount) {
        const auto x1 = Lanes::StepsFrom((piece.from + i) * kGlowStep);
        const auto x2 = Lanes::StepsFrom((piece.from + i + Lanes::kCount / 2) * kGlowStep);
        const auto distances =
            GlowDistances<Lanes>(Lanes::Minus(x1, phase), Lanes::Minus(x2, phase), y - py, arm.values->count);
        const auto share = GlowShare<Lanes>(Lanes::Narrow(GlowCoverage<Lanes, majorIsY>(arm, x1, y),
                                                          GlowCoverage<Lanes, majorIsY>(arm, x2, y)));
        const auto value = Lanes::Times(GlowAlong<Lanes>(arm.values->values, distances), share);
        const int32_t left = piece.count - i;
        if (!factors) {
            Lanes::StoreFirst(value, left, glow[0] + i);
            continue;
        }
        const auto states = Lanes::Gather(piece.stateOfDistance, distances);
        for (int32_t c = 0; c < 3; ++c)
            Lanes::StoreFirst(Lanes::Times(value, Lanes::GatherFourth(factors->factor + c, states)), left,
                              glow[c] + i);
    }
}

template <typename Lanes> void FillFlareGlowAs(const FlarePiece &piece, float *glow) {
    const auto phase = Lanes::AllDoubles(piece.flare->px);
    const double dy = piece.row * kGlowStep - piece.flare->py;
    for (int32_t i = 0; i < piece.count; i += Lanes::kCount) {
        const auto x1 = Lanes::StepsFrom((piece.from + i) * kGlowStep);
        const auto x2 = Lanes::StepsFrom((piece.from + i + Lanes::kCount / 2) * kGlowStep);
        const auto distances =
            GlowDistances<Lanes>(Lanes::Minus(x1, phase), Lanes::Minus(x2, phase), dy, piece.values->count);
        Lanes::StoreFirst(GlowAlong<Lanes>(piece.values->values, distances), piece.count - i, glow + i);
    }
}

// The lanes' bytes less what they move toward white, and the lanes that are left to the integers.
template <typename Lanes>
typename Lanes::Integers MoveBytes(typename Lanes::Integers old, typename Lanes::Floats part,
                                   typename Lanes::Mask *left) {
    const auto way = Lanes::Times(part, Lanes::ToFloats(Lanes::MinusFrom(255, old)));
    const auto steps = Lanes::Round(way);
    const auto beside = Lanes::SizeOf(Lanes::Minus(way, Lanes::ToFloats(steps)));
    *left = Lanes::Either(*left, Lanes::IsAbove(Lanes::TimesPlus(way, Lanes::All(kGlowError), beside),
                                                Lanes::All(0.5f - kGlowMargin)));
    return Lanes::Plus(old, steps);
}

// What is the same for all rows of a batch.
template <typename Lanes> struct GlowLight {
    typename Lanes::Floats strength[3];
    uint8_t *samples[3];
};

// Blends the first `count` lanes from pixel i of a row on; returns a bit for each pixel that it left out.
template <typename Lanes, int32_t planes>
BX_ALWAYS_INLINE uint32_t BlendGlowLanes(const GlowLight<Lanes> &light, const GlowRow &row, int32_t i,
                                         int32_t count) {
    const float *const glow = row.glow + i;
    typename Lanes::Floats part[3];
    for (int32_t c = 0; c < 3; ++c)
        part[c] = Lanes::Times(Lanes::LoadFirst(glow + int64_t{c} * row.step, count), light.strength[c]);
    const auto largest = Lanes::Most(Lanes::Most(part[0], part[1]), part[2]);
    if (Lanes::Any(Lanes::IsAbove(largest, Lanes::All(1.0f)))) {
        const auto scale = Lanes::Over(Lanes::All(1.0f), Lanes::Most(largest, Lanes::All(1.0f)));
        for (int32_t c = 0; c < 3; ++c)
            part[c] = Lanes::Times(part[c], scale);
    }
    if constexpr (planes == 1)
        part[0] = Lanes::Times(Lanes::Plus(Lanes::Plus(part[0], part[1]), part[2]), Lanes::All(1.0f / 3.0f));
    const int64_t at = row.sample + i;
    typename Lanes::Integers old[planes], moved[planes];
    auto left = Lanes::None();
    for (int32_t plane = 0; plane < planes; ++plane) {
        old[plane] = Lanes::ReadFirst(light.samples[plane] + at, count, row.room - i);
        moved[plane] = MoveBytes<Lanes>(old[plane], part[plane], &left);
    }
    if (Lanes::Any(left)) [[unlikely]]
        for (int32_t plane = 0; plane < planes; ++plane)
            moved[plane] = Lanes::Choose(left, old[plane], moved[plane]);
    for (int32_t plane = 0; plane < planes; ++plane)
        Lanes::WriteFirst(moved[plane], count, row.room - i, light.samples[plane] + at);
    return Lanes::Bits(left);
}

// Most rows are short and lie far from each other, too far for the processor to see them coming.
constexpr int32_t kRowsAhead = 8, kCacheLine = 64;
template <int32_t planes> void FetchRow(const GlowBatch &batch, const GlowRow &row) {
    for (int32_t plane = 0; plane < planes; ++plane) {
        const uint8_t *const first = batch.samples[plane] + row.sample;
        _mm_prefetch(reinterpret_cast<const char *>(first), _MM_HINT_T0);
        _mm_prefetch(reinterpret_cast<const char *>(first + row.count - 1), _MM_HINT_T0);
    }
}

template <typename Lanes, int32_t planes> int32_t BlendGlowAs(const GlowBatch &batch, LeftPixel *left) {
    GlowLight<Lanes> light;
    for (int32_t c = 0; c < 3; ++c) {
        light.strength[c] = Lanes::All(batch.strength[c]);
        light.samples[c] = batch.samples[c];
    }
    int32_t found = 0;
    for (int32_t r = 0; r < batch.count; ++r) {
        const GlowRow &row = batch.rows[r];
        if (r + kRowsAhead < batch.count)
            FetchRow<planes>(batch, batch.rows[r + kRowsAhead]);
        for (int32_t i = 0; i < row.count; i += Lanes::kCount) {
            const int32_t count = row.count - i < Lanes::kCount ? row.count - i : Lanes::kCount;
            uint32_t bits = BlendGlowLanes<Lanes, planes>(light, row, i, count);
            for (int32_t lane = 0; bits; ++lane, bits >>= 1)
                [[unlikely]] if (bits & 1)
                    left[found++] = {static_cast<uint16_t>(r), static_cast<uint16_t>(i + lane)};
        }
    }
    return found;
}

} // namespace
