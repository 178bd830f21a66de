// Glow, sixteen pixels at a time.
#include "render/rows/GlowAvx512.h"

#include "render/rows/GlowLoops.h"

namespace {

struct Lanes16 {
    static constexpr int32_t kCount = 16;
    using Floats = __m512;
    using Doubles = __m512d; // half as many
    using Integers = __m512i;
    using Mask = __mmask16;

    static Floats All(float value) { return _mm512_set1_ps(value); }
    static Doubles AllDoubles(double value) { return _mm512_set1_pd(value); }
    static Doubles StepsFrom(int32_t first) {
        return _mm512_add_pd(_mm512_set1_pd(first),
                             _mm512_setr_pd(0.0, 4.0, 8.0, 12.0, 16.0, 20.0, 24.0, 28.0));
    }
    static Floats Times(Floats a, Floats b) { return _mm512_mul_ps(a, b); }
    static Doubles Times(Doubles a, Doubles b) { return _mm512_mul_pd(a, b); }
    static Floats Plus(Floats a, Floats b) { return _mm512_add_ps(a, b); }
    static Doubles Plus(Doubles a, Doubles b) { return _mm512_add_pd(a, b); }
    static Integers Plus(Integers a, Integers b) { return _mm512_add_epi32(a, b); }
    static Floats Minus(Floats a, Floats b) { return _mm512_sub_ps(a, b); }
    static Doubles Minus(Doubles a, Doubles b) { return _mm512_sub_pd(a, b); }
    static Integers Minus(Integers a, Integers b) { return _mm512_sub_epi32(a, b); }
    static Integers Minus(Integers a, int32_t b) { return _mm512_sub_epi32(a, _mm512_set1_epi32(b)); }
    static Integers MinusFrom(int32_t a, Integers b) { return _mm512_sub_epi32(_mm512_set1_epi32(a), b); }
    static Floats Over(Floats a, Floats b) { return _mm512_div_ps(a, b); }
    static Floats TimesPlus(Floats a, Floats b, Floats c) { return _mm512_fmadd_ps(a, b, c); }
    static Doubles TimesPlus(Doubles a, Doubles b, Doubles c) { return _mm512_fmadd_pd(a, b, c); }
    static Floats Most(Floats a, Floats b) { return _mm512_max_ps(a, b); }
    static Floats Least(Floats a, Floats b) { return _mm512_min_ps(a, b); }
    static Doubles Least(Doubles a, Doubles b) { return _mm512_min_pd(a, b); }
    static Floats SizeOf(Floats a) { return _mm512_abs_ps(a); }
    static Doubles SizeOf(Doubles a) { return _mm512_abs_pd(a); }
    static Floats ToFloats(Integers a) { return _mm512_cvtepi32_ps(a); }
    static Integers Round(Floats a) { return _mm512_cvtps_epi32(a); }
    static Floats Narrow(Doubles first, Doubles second) {
        return _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(first)), _mm512_cvtpd_ps(second), 1);
    }

    static Integers BitsOf(Floats a) { return _mm512_castps_si512(a); }
    static Floats FloatsOf(Integers bits) { return _mm512_castsi512_ps(bits); }
    template <uint32_t bits> static Integers ShiftLeft(Integers a) { return _mm512_slli_epi32(a, bits); }
    template <uint32_t bits> static Integers ShiftSigned(Integers a) { return _mm512_srai_epi32(a, bits); }
    static Floats WherePositive(Floats a, Floats value) {
        return _mm512_maskz_mov_ps(_mm512_cmp_ps_mask(a, _mm512_setzero_ps(), _CMP_GT_OQ), value);
    }

    // A distance's square root in tenths, rounded. The root is that of a reciprocal known to 2^-14, corrected
    // by a series to 2^-50; ten times the root of an integer is never nearer than 2^-24 to a half, as far as
    // stamps reach.
    static Doubles DistanceOf(Doubles squared) {
        const Doubles some = _mm512_max_pd(squared, _mm512_set1_pd(0x1p-100));
        const Doubles reciprocal = _mm512_rsqrt14_pd(some), root = _mm512_mul_pd(some, reciprocal);
        const Doubles rest = _mm512_fnmadd_pd(root, reciprocal, _mm512_set1_pd(1.0));
        Doubles series = _mm512_fmadd_pd(rest, _mm512_set1_pd(5.0 / 16.0), _mm512_set1_pd(3.0 / 8.0));
        series = _mm512_mul_pd(_mm512_fmadd_pd(series, rest, _mm512_set1_pd(0.5)), rest);
        const Doubles exact = _mm512_fmadd_pd(root, series, root);
        return Floor(_mm512_fmadd_pd(exact, _mm512_set1_pd(10.0), _mm512_set1_pd(0.5)));
    }

    static Doubles Floor(Doubles a) {
        return _mm512_roundscale_pd(a, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC);
    }
    static bool AnyAbove(Doubles a, double b) {
        return _mm512_cmp_pd_mask(a, _mm512_set1_pd(b), _CMP_GT_OQ) != 0;
    }
    static Doubles WhereBelow(Doubles a, double b, Doubles below, Doubles otherwise) {
        return _mm512_mask_blend_pd(_mm512_cmp_pd_mask(a, _mm512_set1_pd(b), _CMP_LT_OQ), otherwise, below);
    }
    using HalfIntegers = __m256i;
    static HalfIntegers Whole(Doubles a) { return _mm512_cvttpd_epi32(a); }
    static Integers Join(HalfIntegers first, HalfIntegers second) {
        return _mm512_inserti64x4(_mm512_castsi256_si512(first), second, 1);
    }
    static Integers AtMost(Integers a, uint32_t most) {
        return _mm512_min_epu32(a, _mm512_set1_epi32(static_cast<int32_t>(most)));
    }
    static Integers ShiftRight(Integers a) { return _mm512_srli_epi32(a, 1); }
    static Integers Gather(const uint32_t *table, Integers at) {
        return _mm512_i32gather_epi32(at, table, 4);
    }
    static void Store(Doubles a, double *to) { _mm512_storeu_pd(to, a); }
    static Integers Load(const int32_t *from) { return _mm512_loadu_si512(from); }

    // Every fourth value.
    static Floats GatherFourth(const float *table, Integers at) {
        return _mm512_i32gather_ps(_mm512_slli_epi32(at, 1), table, 8);
    }

    static Mask First(int32_t count) { return static_cast<Mask>((1u << count) - 1); }
    static Floats LoadFirst(const float *from, int32_t count) {
        return _mm512_maskz_loadu_ps(First(count), from);
    }
    static void StoreFirst(Floats a, int32_t count, float *to) {
        if (count >= kCount)
            _mm512_storeu_ps(to, a);
        else
            _mm512_mask_storeu_ps(to, First(count), a);
    }
    static Integers ReadFirst(const uint8_t *from, int32_t count, int32_t) {
        return _mm512_cvtepu8_epi32(_mm_maskz_loadu_epi8(First(count), from));
    }
    static void WriteFirst(Integers a, int32_t count, int32_t, uint8_t *to) {
        _mm_mask_storeu_epi8(to, First(count), _mm512_cvtepi32_epi8(a));
    }

    static Mask None() { return 0; }
    static Mask IsAbove(Floats a, Floats b) { return _mm512_cmp_ps_mask(a, b, _CMP_GT_OQ); }
    static Mask Either(Mask a, Mask b) { return static_cast<Mask>(a | b); }
    static uint32_t Bits(Mask mask) { return mask; }
    static bool Any(Mask mask) { return mask != 0; }
    static Integers Choose(Mask mask, Integers set, Integers clear) {
        return _mm512_mask_blend_epi32(mask, clear, set);
    }
};

} // namespace

void FillArmGlowAvx512(const GlowPiece &piece, float *const glow[3]) {
    piece.arm->majorIsY ? FillArmGlowAs<Lanes16, true>(piece, glow)
                        : FillArmGlowAs<Lanes16, false>(piece, glow);
}

void FillFlareGlowAvx512(const FlarePiece &piece, float *glow) {
    FillFlareGlowAs<Lanes16>(piece, glow);
}

int32_t BlendGlowAvx512(const GlowBatch &batch, LeftPixel *left) {
    return batch.planes == 1 ? BlendGlowAs<Lanes16, 1>(batch, left) : BlendGlowAs<Lanes16, 3>(batch, left);
}
