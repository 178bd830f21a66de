// Rows of arms and flares, eight pixels at a time; the same steps, in the same order and precision, as in the
// portable form, so the integers are the same. Nothing defined in a header is called here: a copy of it
// compiled for AVX2 could be the one that the linker keeps for every caller.
#include "render/rows/RowsAvx2.h"

#include "render/shape/FixedPower.h"

#include <immintrin.h>

namespace {

constexpr int32_t kLanes = 8, kHalf = 4;
constexpr int32_t kPixelStep = 4; // quarter pixels
constexpr double kOne = 4294967294.0;
// Terms of the series that are needed for a power of 1.6: the next is below 2^-51.
constexpr int32_t kCoverageTerms = 5;

// 0, 4, 8, 12: pixels side by side, in quarter pixels.
__m256d StepsFrom(int32_t first) {
    return _mm256_add_pd(_mm256_set1_pd(first * kPixelStep), _mm256_setr_pd(0.0, 4.0, 8.0, 12.0));
}

// The low halves of eight 64-bit lanes, in order.
__m256i LowHalves(__m256i first, __m256i second) {
    const __m256 mixed = _mm256_shuffle_ps(_mm256_castsi256_ps(first), _mm256_castsi256_ps(second), 0x88);
    return _mm256_permute4x64_epi64(_mm256_castps_si256(mixed), 0xD8);
}

__m256i MulHigh(__m256i a, __m256i b) {
    const __m256i even = _mm256_srli_epi64(_mm256_mul_epu32(a, b), 32);
    const __m256i odd = _mm256_mul_epu32(_mm256_srli_epi64(a, 32), _mm256_srli_epi64(b, 32));
    return _mm256_blend_epi32(even, odd, 0xAA);
}

__m256i MulLow(__m256i nearOne, __m256i small) {
    return _mm256_mullo_epi32(_mm256_srli_epi32(nearOne, 18), _mm256_srli_epi32(small, 14));
}

__m256d Coverage(const Arm &arm, __m256d centre, __m256d x) {
    const __m256d half = _mm256_set1_pd(0.5), quarter = _mm256_set1_pd(0.25);
    const __m256d width = _mm256_set1_pd(arm.halfWidth), slope = _mm256_set1_pd(arm.edgeSlope);
    const __m256d before = _mm256_sub_pd(_mm256_sub_pd(centre, width), x);
    const __m256d after = _mm256_sub_pd(_mm256_add_pd(centre, width), x);
    const __m256d rising = _mm256_sub_pd(half, _mm256_mul_pd(_mm256_mul_pd(before, quarter), slope));
    const __m256d falling = _mm256_add_pd(_mm256_mul_pd(_mm256_mul_pd(after, quarter), slope), half);
    return _mm256_min_pd(_mm256_min_pd(rising, falling), _mm256_set1_pd(1.0));
}

// Coverage^1.6 × One + 0.5, before truncation. Coverage in (0, 1].
__m256d ScaledShare(__m256d coverage) {
    const FixedPower &power = gCoveragePower;
    const __m256i bits = _mm256_castpd_si256(coverage);
    const __m256i octave =
        _mm256_sub_epi64(_mm256_srli_epi64(bits, 52), _mm256_set1_epi64x(1023 + kFirstOctave));
    const __m256i cell = _mm256_and_si256(_mm256_srli_epi64(bits, 44), _mm256_set1_epi64x(kPowerCells - 1));
    const __m256i one = _mm256_set1_epi64x(0x3FF0000000000000);
    const __m256i mantissa =
        _mm256_or_si256(_mm256_and_si256(bits, _mm256_set1_epi64x(0x000FFFFFFFFFFFFF)), one);
    const __m256i centre = _mm256_or_si256(
        _mm256_and_si256(mantissa, _mm256_set1_epi64x(static_cast<int64_t>(0xFFFFF00000000000))),
        _mm256_set1_epi64x(0x0000080000000000));
    const __m256d u = _mm256_mul_pd(_mm256_sub_pd(_mm256_castsi256_pd(mantissa), _mm256_castsi256_pd(centre)),
                                    _mm256_i64gather_pd(power.reciprocal, cell, 8));
    __m256d series = _mm256_set1_pd(power.term[kCoverageTerms - 1]);
    for (int32_t i = kCoverageTerms - 2; i >= 0; --i)
        series = _mm256_add_pd(_mm256_mul_pd(series, u), _mm256_set1_pd(power.term[i]));
    const __m256d value = _mm256_mul_pd(_mm256_i64gather_pd(power.octave, octave, 8),
                                        _mm256_mul_pd(_mm256_i64gather_pd(power.cell, cell, 8), series));
    return _mm256_add_pd(_mm256_mul_pd(value, _mm256_set1_pd(kOne)), _mm256_set1_pd(0.5));
}

// Whole parts as 64-bit lanes whose low halves are the integers, and a bit for each lane too near to the next
// one.
__m256i Truncate(__m256d share, int32_t *unsure) {
    const __m256d whole = _mm256_floor_pd(share);
    const __m256d part = _mm256_sub_pd(share, whole);
    const __m256d sure = _mm256_and_pd(_mm256_cmp_pd(part, _mm256_set1_pd(kShareMargin), _CMP_GT_OQ),
                                       _mm256_cmp_pd(part, _mm256_set1_pd(1.0 - kShareMargin), _CMP_LT_OQ));
    *unsure = ~_mm256_movemask_pd(sure) & 0xF;
    return _mm256_castpd_si256(_mm256_add_pd(whole, _mm256_set1_pd(4503599627370496.0))); // 2^52
}

// Eight shares; 0 where the coverage is 0 or less.
__m256i Shares(__m256d first, __m256d second) {
    const __m256d zero = _mm256_setzero_pd(), one = _mm256_set1_pd(1.0);
    const __m256d covered1 = _mm256_cmp_pd(first, zero, _CMP_GT_OQ),
                  covered2 = _mm256_cmp_pd(second, zero, _CMP_GT_OQ);
    first = _mm256_blendv_pd(one, first, covered1);
    second = _mm256_blendv_pd(one, second, covered2);
    int32_t unsure1, unsure2;
    const __m256i whole1 = Truncate(ScaledShare(first), &unsure1),
                  whole2 = Truncate(ScaledShare(second), &unsure2);
    __m256i shares = LowHalves(whole1, whole2);
    if (unsure1 | unsure2) [[unlikely]] {
        alignas(32) double coverage[kLanes];
        alignas(32) uint32_t share[kLanes];
        _mm256_store_pd(coverage, first);
        _mm256_store_pd(coverage + kHalf, second);
        _mm256_store_si256(reinterpret_cast<__m256i *>(share), shares);
        for (int32_t lane = 0; lane < kLanes; ++lane)
            if ((unsure1 | unsure2 << kHalf) >> lane & 1)
                share[lane] = ShareByLibrary(coverage[lane]);
        shares = _mm256_load_si256(reinterpret_cast<const __m256i *>(share));
    }
    return _mm256_and_si256(shares, LowHalves(_mm256_castpd_si256(covered1), _mm256_castpd_si256(covered2)));
}

__m128i HalfDistances(__m256d dx, __m256d dy) {
    const __m256d squared = _mm256_add_pd(_mm256_mul_pd(dx, dx), _mm256_mul_pd(dy, dy));
    return _mm256_cvttpd_epi32(
        _mm256_add_pd(_mm256_mul_pd(_mm256_set1_pd(10.0), _mm256_sqrt_pd(squared)), _mm256_set1_pd(0.5)));
}

// Distances as indices into a table of `count` values.
__m256i Distances(__m256d dx1, __m256d dx2, __m256d dy, uint32_t count) {
    const __m256i distances = _mm256_set_m128i(HalfDistances(dx2, dy), HalfDistances(dx1, dy));
    return _mm256_min_epu32(distances, _mm256_set1_epi32(static_cast<int32_t>(count - 1)));
}

__m256i Gather(const uint32_t *values, __m256i index) {
    return _mm256_i32gather_epi32(reinterpret_cast<const int *>(values), index, 4);
}

void StoreStates(const uint16_t *stateOfDistance, __m256i distances, uint16_t *states) {
    const __m256i pairs =
        _mm256_i32gather_epi32(reinterpret_cast<const int *>(stateOfDistance), distances, 2);
    const __m256i single = _mm256_and_si256(pairs, _mm256_set1_epi32(0xFFFF));
    const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi32(single, single), 0xD8);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(states), _mm256_castsi256_si128(packed));
}

template <bool majorIsY> __m256d HalfCoverage(const Arm &arm, __m256d x, double y) {
    const __m256d row = _mm256_set1_pd(y);
    const __m256d major = majorIsY ? row : x, minor = majorIsY ? x : row;
    const __m256d centre =
        _mm256_add_pd(_mm256_set1_pd(arm.crossing), _mm256_mul_pd(_mm256_set1_pd(arm.slope), major));
    return Coverage(arm, centre, minor);
}

template <bool majorIsY, bool precise>
void FillArmAs(const ArmPiece &piece, uint32_t *values, uint16_t *states) {
    const Arm &arm = *piece.arm;
    const int32_t px = majorIsY ? arm.minorPhase : arm.majorPhase,
                  py = majorIsY ? arm.majorPhase : arm.minorPhase;
    const double y = piece.row * kPixelStep;
    const __m256d dy = _mm256_set1_pd(y - py), phase = _mm256_set1_pd(px);
    for (int32_t i = 0; i < piece.count; i += kLanes) {
        const __m256d x1 = StepsFrom(piece.from + i), x2 = StepsFrom(piece.from + i + kHalf);
        const __m256i distances =
            Distances(_mm256_sub_pd(x1, phase), _mm256_sub_pd(x2, phase), dy, arm.values->count);
        const __m256i along = Gather(arm.values->values, distances);
        const __m256i shares = Shares(HalfCoverage<majorIsY>(arm, x1, y), HalfCoverage<majorIsY>(arm, x2, y));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(values + i),
                            precise ? MulHigh(shares, along) : MulLow(shares, along));
        StoreStates(piece.stateOfDistance, distances, states + i);
    }
}

} // namespace

void FillArmAvx2(const ArmPiece &piece, uint32_t *values, uint16_t *states) {
    if (piece.arm->majorIsY)
        piece.precise ? FillArmAs<true, true>(piece, values, states)
                      : FillArmAs<true, false>(piece, values, states);
    else
        piece.precise ? FillArmAs<false, true>(piece, values, states)
                      : FillArmAs<false, false>(piece, values, states);
}

void FillFlareAvx2(const FlarePiece &piece, uint32_t *values) {
    const FlareStamp &flare = *piece.flare;
    const __m256d dy = _mm256_set1_pd(piece.row * kPixelStep - flare.py), phase = _mm256_set1_pd(flare.px);
    for (int32_t i = 0; i < piece.count; i += kLanes) {
        const __m256d dx1 = _mm256_sub_pd(StepsFrom(piece.from + i), phase);
        const __m256d dx2 = _mm256_sub_pd(StepsFrom(piece.from + i + kHalf), phase);
        const __m256i distances = Distances(dx1, dx2, dy, piece.values->count);
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(values + i), Gather(piece.values->values, distances));
    }
}
