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
constexpr float kLeastCoverage = 0x1p-60f; // of a logarithm; no coverage above 0 is smaller
constexpr float kLeastLogarithm = -100.0f; // of a share: far too little to show
constexpr float kGlowLift = 3.0f;          // a spike is flat until its power falls below an eighth
constexpr float kGlowCoverageExponent = static_cast<float>(kCoverageExponent);

// Two terms of a series. Series are added up in pairs: one term after the other would take as long again.
template <typename Lanes>
BX_ALWAYS_INLINE typename Lanes::Floats Pair(const float *terms, typename Lanes::Floats u) {
    return Lanes::TimesPlus(Lanes::All(terms[1]), u, Lanes::All(terms[0]));
}

// The logarithm to base 2, to 2^-24 and half its last place: of the mantissa between the roots of a half and
// of 2 as a series about 1, which is exact at 1.
template <typename Lanes> BX_ALWAYS_INLINE typename Lanes::Floats LogOf(typename Lanes::Floats x) {
    constexpr float kTerms[] = {1.44269487f,   -0.721347129f, 0.480922423f,  -0.360721137f, 0.287658757f,
                                -0.238521196f, 0.21736575f,   -0.210289705f, 0.12542775f};
    constexpr int32_t kRootOfHalf = 0x3F3504F3;
    const auto bits = Lanes::BitsOf(x);
    const auto octave = Lanes::template ShiftSigned<23>(Lanes::Minus(bits, kRootOfHalf));
    const auto u = Lanes::Minus(Lanes::FloatsOf(Lanes::Minus(bits, Lanes::template ShiftLeft<23>(octave))),
                                Lanes::All(1.0f));
    const auto squared = Lanes::Times(u, u), fourth = Lanes::Times(squared, squared);
    const auto low = Lanes::TimesPlus(Pair<Lanes>(kTerms + 2, u), squared, Pair<Lanes>(kTerms, u));
    const auto high = Lanes::TimesPlus(Pair<Lanes>(kTerms + 6, u), squared, Pair<Lanes>(kTerms + 4, u));
    const auto last = Lanes::TimesPlus(Lanes::All(kTerms[8]), fourth, high);
    return Lanes::TimesPlus(Lanes::TimesPlus(last, fourth, low), u, Lanes::ToFloats(octave));
}

// 2^x to 2^-22, from -100 on; exact at whole numbers.
template <typename Lanes> BX_ALWAYS_INLINE typename Lanes::Floats PowerOfTwo(typename Lanes::Floats x) {
    constexpr float kTerms[] = {1.0f,          0.693146978f,   0.240222421f,
                                0.0555073373f, 0.00967151251f, 0.00132647312f};
    const auto whole = Lanes::Round(x);
    const auto u = Lanes::Minus(x, Lanes::ToFloats(whole));
    const auto squared = Lanes::Times(u, u);
    const auto high = Lanes::TimesPlus(Pair<Lanes>(kTerms + 4, u), squared, Pair<Lanes>(kTerms + 2, u));
    const auto series = Lanes::TimesPlus(high, squared, Pair<Lanes>(kTerms, u));
    return Lanes::FloatsOf(Lanes::Plus(Lanes::BitsOf(series), Lanes::template ShiftLeft<23>(whole)));
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

// The distances of pixels (dx, dy) away, as whole numbers.
template <typename Lanes> struct GlowDistances { typename Lanes::Doubles first, second; };
template <typename Lanes>
BX_ALWAYS_INLINE GlowDistances<Lanes> DistancesOf(typename Lanes::Doubles dx1, typename Lanes::Doubles dx2,
                                                  double dy) {
    const auto squared = Lanes::AllDoubles(dy * dy);
    return {Lanes::DistanceOf(Lanes::TimesPlus(dx1, dx1, squared)),
            Lanes::DistanceOf(Lanes::TimesPlus(dx2, dx2, squared))};
}

// The logarithm of the values there as shares of the largest.
template <typename Lanes>
BX_ALWAYS_INLINE typename Lanes::Floats FallOffAt(const GlowCurve &curve,
                                                  const GlowDistances<Lanes> &distances) {
    const auto step = Lanes::AllDoubles(curve.step), one = Lanes::AllDoubles(1.0);
    const auto base = Lanes::Narrow(Lanes::TimesPlus(distances.first, step, one),
                                    Lanes::TimesPlus(distances.second, step, one));
    return Lanes::Least(
        Lanes::TimesPlus(LogOf<Lanes>(base), Lanes::All(curve.exponent), Lanes::All(kGlowLift)),
        Lanes::All(0.0f));
}

// The rainbow's states at half the lanes' distances. A phase that may or may not be over raises *isOpen.
template <typename Lanes>
BX_ALWAYS_INLINE typename Lanes::HalfIntegers StatesOf(const GlowRainbow &rainbow,
                                                       typename Lanes::Doubles distances, bool *isOpen) {
    const auto exact = Lanes::Times(distances, Lanes::AllDoubles(rainbow.phasesPerDistance));
    const auto phase = Lanes::Floor(exact);
    const auto part = Lanes::Minus(Lanes::Minus(exact, phase), Lanes::AllDoubles(0.5));
    *isOpen = *isOpen || Lanes::AnyAbove(Lanes::SizeOf(part), 0.5 - kPhaseDoubt);
    const auto turns = Lanes::Floor(
        Lanes::TimesPlus(phase, Lanes::AllDoubles(1.0 / kFullTurn), Lanes::AllDoubles(0.5 / kFullTurn)));
    const auto turned = Lanes::TimesPlus(turns, Lanes::AllDoubles(-double{kFullTurn}),
                                         Lanes::Plus(phase, Lanes::AllDoubles(kRampPhases)));
    return Lanes::Whole(Lanes::WhereBelow(phase, kRampPhases, phase, turned));
}

// Each worked out for itself.
BX_NEVER_INLINE void StatesByIntegers(const GlowRainbow &rainbow, const double *distances, int32_t count,
                                      int32_t *states) {
    for (int32_t i = 0; i < count; ++i)
        states[i] =
            static_cast<int32_t>(RainbowStateAt(*rainbow.context, static_cast<uint32_t>(distances[i])));
}

template <typename Lanes>
BX_ALWAYS_INLINE typename Lanes::Integers GlowStates(const GlowRainbow &rainbow,
                                                     const GlowDistances<Lanes> &distances) {
    bool isOpen = false;
    const auto first = StatesOf<Lanes>(rainbow, distances.first, &isOpen),
               second = StatesOf<Lanes>(rainbow, distances.second, &isOpen);
    if (!isOpen) [[likely]]
        return Lanes::Join(first, second);
    double each[Lanes::kCount];
    int32_t states[Lanes::kCount];
    Lanes::Store(distances.first, each);
    Lanes::Store(distances.second, each + Lanes::kCount / 2);
    StatesByIntegers(rainbow, each, Lanes::kCount, states);
    return Lanes::Load(states);
}

template <typename Lanes, bool majorIsY> void FillArmGlowAs(const GlowPiece &piece, float *const glow[3]) {
    const Arm &arm = *piece.arm;
    const GlowCurve &curve = arm.values->curve;
    const int32_t px = majorIsY ? arm.minorPhase : arm.majorPhase,
                  py = majorIsY ? arm.majorPhase : arm.minorPhase;
    const double y = piece.row * kGlowStep;
    const auto phase = Lanes::AllDoubles(px);
    for (int32_t i = 0; i < piece.count; i += Lanes::kCount) {
        const auto x1 = Lanes::StepsFrom((piece.from + i) * kGlowStep);
        const auto x2 = Lanes::StepsFrom((piece.from + i + Lanes::kCount / 2) * kGlowStep);
        const auto distances = DistancesOf<Lanes>(Lanes::Minus(x1, phase), Lanes::Minus(x2, phase), y - py);
        const auto coverage = Lanes::Narrow(GlowCoverage<Lanes, majorIsY>(arm, x1, y),
                                            GlowCoverage<Lanes, majorIsY>(arm, x2, y));
        const auto logarithm =
            Lanes::TimesPlus(LogOf<Lanes>(Lanes::Most(coverage, Lanes::All(kLeastCoverage))),
                             Lanes::All(kGlowCoverageExponent), FallOffAt<Lanes>(curve, distances));
        const auto share = PowerOfTwo<Lanes>(Lanes::Most(logarithm, Lanes::All(kLeastLogarithm)));
        const auto value = Lanes::WherePositive(coverage, Lanes::Times(share, Lanes::All(curve.peak)));
        const int32_t left = piece.count - i;
        if (!piece.rainbow) {
            Lanes::StoreFirst(value, left, glow[0] + i);
            continue;
        }
        const auto states = GlowStates<Lanes>(*piece.rainbow, distances);
        for (int32_t c = 0; c < 3; ++c)
            Lanes::StoreFirst(
                Lanes::Times(value, Lanes::GatherFourth(piece.rainbow->factors->factor + c, states)), left,
                glow[c] + i);
    }
}

// A flare has few values, all of them at hand: looking them up is sooner done.
template <typename Lanes> void FillFlareGlowAs(const FlarePiece &piece, float *glow) {
    const auto phase = Lanes::AllDoubles(piece.flare->px);
    const double dy = piece.row * kGlowStep - piece.flare->py;
    for (int32_t i = 0; i < piece.count; i += Lanes::kCount) {
        const auto x1 = Lanes::StepsFrom((piece.from + i) * kGlowStep);
        const auto x2 = Lanes::StepsFrom((piece.from + i + Lanes::kCount / 2) * kGlowStep);
        const auto distances = DistancesOf<Lanes>(Lanes::Minus(x1, phase), Lanes::Minus(x2, phase), dy);
        const auto index =
            Lanes::AtMost(Lanes::Join(Lanes::Whole(distances.first), Lanes::Whole(distances.second)),
                          piece.values->count - 1);
        const auto halves = Lanes::ShiftRight(Lanes::Gather(piece.values->values, index));
        Lanes::StoreFirst(Lanes::Times(Lanes::ToFloats(halves), Lanes::All(kHalfFraction)), piece.count - i,
                          glow + i);
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
    if (Lanes::Any(left)) [[unlikely]] {
        for (int32_t plane = 0; plane < planes; ++plane)
            moved[plane] = Lanes::Choose(left, old[plane], moved[plane]);
    }
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
            for (int32_t lane = 0; bits; ++lane, bits >>= 1) {
                if (bits & 1) [[unlikely]]
                    left[found++] = {static_cast<uint16_t>(r), static_cast<uint16_t>(i + lane)};
            }
        }
    }
    return found;
}

} // namespace
