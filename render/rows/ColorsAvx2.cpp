// The colours of one light source by state of the rainbow, a state at a time with a lane for each channel.
// Nothing defined in a header is called here: a copy of it compiled for AVX2 could be the one that the linker
// keeps for every caller.
#include "render/rows/ColorsAvx2.h"

#include <immintrin.h>

namespace {

constexpr int64_t kOne = 4294967294;
constexpr double kAllBits = 4294967295.0;
constexpr int64_t kBitsOf2To52 = 0x4330000000000000;

__m256i All64(int64_t value) {
    return _mm256_set1_epi64x(value);
}

// Integers below 2^32 and the doubles of the same value.
__m256d ToDouble(__m256i whole) {
    return _mm256_sub_pd(_mm256_castsi256_pd(_mm256_or_si256(whole, All64(kBitsOf2To52))),
                         _mm256_set1_pd(4503599627370496.0));
}
__m256i FromDouble(__m256d whole) {
    return _mm256_xor_si256(_mm256_castpd_si256(_mm256_add_pd(whole, _mm256_set1_pd(4503599627370496.0))),
                            All64(kBitsOf2To52));
}

// The largest of the first three lanes, in every lane.
__m256i Largest(__m256i channels) {
    const __m256i turned = _mm256_permute4x64_epi64(channels, 0xC9); // 1 2 0
    const __m256i again = _mm256_permute4x64_epi64(channels, 0xD2);  // 2 0 1
    const __m256i all = _mm256_max_epu32(channels, _mm256_max_epu32(turned, again));
    return _mm256_permute4x64_epi64(all, 0x00);
}

// Channels as fractions of the largest: the quotient in doubles is too large by one at most, and that shows
// in the product. Of 0 by 0 the minimum takes its second operand, and the result is 1.0 as it should be.
__m256i Normalise(__m256i channels, __m256i largest) {
    const __m256d scaled = _mm256_mul_pd(ToDouble(channels), _mm256_set1_pd(4294967296.0));
    const __m256d share = _mm256_floor_pd(_mm256_div_pd(scaled, ToDouble(largest)));
    const __m256i quotient = FromDouble(_mm256_min_pd(share, _mm256_set1_pd(kAllBits)));
    const __m256i rest =
        _mm256_sub_epi64(_mm256_slli_epi64(channels, 32), _mm256_mul_epu32(quotient, largest));
    const __m256i exact = _mm256_add_epi64(quotient, _mm256_cmpgt_epi64(_mm256_setzero_si256(), rest));
    return _mm256_min_epu32(exact, All64(kOne));
}

template <bool precise> __m256i Tinted(__m256i factors, __m256i tint) {
    if (precise)
        return _mm256_srli_epi64(_mm256_mul_epu32(factors, tint), 32);
    return _mm256_mul_epu32(_mm256_srli_epi64(factors, 18), _mm256_srli_epi64(tint, 14));
}

template <bool precise> void MakeColorsAs(const ColorPiece &piece, BlendColor *colors) {
    const __m256i tint = _mm256_setr_epi64x(piece.tint[0], piece.tint[1], piece.tint[2], 0);
    // A colour's fields in order: the largest channel, which is put into the fourth lane, and the others.
    const __m256i order = _mm256_setr_epi32(6, 0, 2, 4, 6, 0, 2, 4);
    for (uint32_t i = 0; i < piece.count; ++i) {
        const auto *factors = reinterpret_cast<const __m128i *>(piece.factors + i);
        const __m256i channels = Tinted<precise>(_mm256_cvtepu32_epi64(_mm_load_si128(factors)), tint);
        const __m256i largest = Largest(channels);
        const __m256i inverse = _mm256_sub_epi64(All64(kOne), Normalise(channels, largest));
        const __m256i fields = _mm256_permutevar8x32_epi32(_mm256_blend_epi32(inverse, largest, 0xC0), order);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(colors + i), _mm256_castsi256_si128(fields));
    }
}

} // namespace

void MakeColorsAvx2(const ColorPiece &piece, BlendColor *colors) {
    piece.precise ? MakeColorsAs<true>(piece, colors) : MakeColorsAs<false>(piece, colors);
}
