// Glow, eight pixels at a time.
#include "render/rows/GlowAvx2.h"

#include "render/rows/GlowLoops.h"

namespace {

struct Lanes8 {
    static constexpr int32_t kCount = 8;
    using Floats = __m256;
    using Doubles = __m256d; // half as many
    using Integers = __m256i;
    using Mask = __m256;

    static Floats All(float value) { return _mm256_set1_ps(value); }
    static Doubles AllDoubles(double value) { return _mm256_set1_pd(value); }
    static Doubles StepsFrom(int32_t first) {
        return _mm256_add_pd(_mm256_set1_pd(first), _mm256_setr_pd(0.0, 4.0, 8.0, 12.0));
    }
    static Floats Times(Floats a, Floats b) { return _mm256_mul_ps(a, b); }
    static Doubles Times(Doubles a, Doubles b) { return _mm256_mul_pd(a, b); }
    static Floats Plus(Floats a, Floats b) { return _mm256_add_ps(a, b); }
    static Doubles Plus(Doubles a, Doubles b) { return _mm256_add_pd(a, b); }
    static Integers Plus(Integers a, Integers b) { return _mm256_add_epi32(a, b); }
    static Floats Minus(Floats a, Floats b) { return _mm256_sub_ps(a, b); }
    static Doubles Minus(Doubles a, Doubles b) { return _mm256_sub_pd(a, b); }
    static Integers Minus(Integers a, Integers b) { return _mm256_sub_epi32(a, b); }
    static Integers Minus(Integers a, int32_t b) { return _mm256_sub_epi32(a, _mm256_set1_epi32(b)); }
    static Integers MinusFrom(int32_t a, Integers b) { return _mm256_sub_epi32(_mm256_set1_epi32(a), b); }
    static Floats Over(Floats a, Floats b) { return _mm256_div_ps(a, b); }
    static Floats TimesPlus(Floats a, Floats b, Floats c) { return _mm256_fmadd_ps(a, b, c); }
    static Doubles TimesPlus(Doubles a, Doubles b, Doubles c) { return _mm256_fmadd_pd(a, b, c); }
    static Floats Most(Floats a, Floats b) { return _mm256_max_ps(a, b); }
    static Floats Least(Floats a, Floats b) { return _mm256_min_ps(a, b); }
    static Doubles Least(Doubles a, Doubles b) { return _mm256_min_pd(a, b); }
    static Floats SizeOf(Floats a) { return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), a); }
    static Doubles SizeOf(Doubles a) { return _mm256_andnot_pd(_mm256_set1_pd(-0.0), a); }
    static Floats ToFloats(Integers a) { return _mm256_cvtepi32_ps(a); }
    static Integers Round(Floats a) { return _mm256_cvtps_epi32(a); }
    static Floats Narrow(Doubles first, Doubles second) {
        return _mm256_set_m128(_mm256_cvtpd_ps(second), _mm256_cvtpd_ps(first));
    }

    static Integers BitsOf(Floats a) { return _mm256_castps_si256(a); }
    static Floats FloatsOf(Integers bits) { return _mm256_castsi256_ps(bits); }
    template <int32_t bits> static Integers ShiftLeft(Integers a) { return _mm256_slli_epi32(a, bits); }
    template <int32_t bits> static Integers ShiftSigned(Integers a) { return _mm256_srai_epi32(a, bits); }
    static Floats WherePositive(Floats a, Floats value) {
        return _mm256_and_ps(_mm256_cmp_ps(a, _mm256_setzero_ps(), _CMP_GT_OQ), value);
    }

    // A distance's square root in tenths, rounded; in double precision, one rounding after the other.
    static Doubles DistanceOf(Doubles squared) {
        return Floor(
            _mm256_add_pd(_mm256_mul_pd(_mm256_set1_pd(10.0), _mm256_sqrt_pd(squared)), _mm256_set1_pd(0.5)));
    }

    static Doubles Floor(Doubles a) { return _mm256_floor_pd(a); }
    static bool AnyAbove(Doubles a, double b) {
        return _mm256_movemask_pd(_mm256_cmp_pd(a, _mm256_set1_pd(b), _CMP_GT_OQ)) != 0;
    }
    static Doubles WhereBelow(Doubles a, double b, Doubles below, Doubles otherwise) {
        return _mm256_blendv_pd(otherwise, below, _mm256_cmp_pd(a, _mm256_set1_pd(b), _CMP_LT_OQ));
    }
    using HalfIntegers = __m128i;
    static HalfIntegers Whole(Doubles a) { return _mm256_cvttpd_epi32(a); }
    static Integers Join(HalfIntegers first, HalfIntegers second) { return _mm256_set_m128i(second, first); }
    static Integers AtMost(Integers a, uint32_t most) {
        return _mm256_min_epu32(a, _mm256_set1_epi32(static_cast<int32_t>(most)));
    }
    static Integers ShiftRight(Integers a) { return _mm256_srli_epi32(a, 1); }
    static Integers Gather(const uint32_t *table, Integers at) {
        return _mm256_i32gather_epi32(reinterpret_cast<const int *>(table), at, 4);
    }
    static void Store(Doubles a, double *to) { _mm256_storeu_pd(to, a); }
    static Integers Load(const int32_t *from) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(from));
    }

    // Every fourth value.
    static Floats GatherFourth(const float *table, Integers at) {
        return _mm256_i32gather_ps(table, _mm256_slli_epi32(at, 1), 8);
    }

    static __m256i FirstMask(int32_t count) {
        return _mm256_cmpgt_epi32(_mm256_set1_epi32(count), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
    }
    static Floats LoadFirst(const float *from, int32_t count) {
        return count == kCount ? _mm256_loadu_ps(from) : _mm256_maskload_ps(from, FirstMask(count));
    }
    static void StoreFirst(Floats a, int32_t count, float *to) {
        if (count >= kCount)
            _mm256_storeu_ps(to, a);
        else
            _mm256_maskstore_ps(to, FirstMask(count), a);
    }
    static Integers ReadFirst(const uint8_t *from, int32_t count, int32_t room) {
        if (room >= kCount)
            return _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(from)));
        uint8_t bytes[kCount] = {};
        for (int32_t i = 0; i < count; ++i)
            bytes[i] = from[i];
        return _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(bytes)));
    }
    static void WriteFirst(Integers a, int32_t count, int32_t room, uint8_t *to) {
        const __m128i words = _mm_packus_epi32(_mm256_castsi256_si128(a), _mm256_extracti128_si256(a, 1));
        const __m128i packed = _mm_packus_epi16(words, words);
        if (room >= kCount) {
            _mm_storel_epi64(reinterpret_cast<__m128i *>(to), packed);
            return;
        }
        uint8_t bytes[kCount];
        _mm_storel_epi64(reinterpret_cast<__m128i *>(bytes), packed);
        for (int32_t i = 0; i < count; ++i)
            to[i] = bytes[i];
    }

    static Mask None() { return _mm256_setzero_ps(); }
    static Mask IsAbove(Floats a, Floats b) { return _mm256_cmp_ps(a, b, _CMP_GT_OQ); }
    static Mask Either(Mask a, Mask b) { return _mm256_or_ps(a, b); }
    static uint32_t Bits(Mask mask) { return static_cast<uint32_t>(_mm256_movemask_ps(mask)); }
    static bool Any(Mask mask) { return Bits(mask) != 0; }
    static Integers Choose(Mask mask, Integers set, Integers clear) {
        return _mm256_blendv_epi8(clear, set, _mm256_castps_si256(mask));
    }
};

} // namespace

void FillArmGlowAvx2(const GlowPiece &piece, float *const glow[3]) {
    piece.arm->majorIsY ? FillArmGlowAs<Lanes8, true>(piece, glow)
                        : FillArmGlowAs<Lanes8, false>(piece, glow);
}

void FillFlareGlowAvx2(const FlarePiece &piece, float *glow) {
    FillFlareGlowAs<Lanes8>(piece, glow);
}

int32_t BlendGlowAvx2(const GlowBatch &batch, LeftPixel *left) {
    return batch.planes == 1 ? BlendGlowAs<Lanes8, 1>(batch, left) : BlendGlowAs<Lanes8, 3>(batch, left);
}
