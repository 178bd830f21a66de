// Blends eight pixels at a time; the same integers as the portable form. Nothing defined in a header is
// called here: a copy of it compiled for AVX2 could be the one that the linker keeps for every caller.
#include "render/rows/BlendAvx2.h"

#include "render/rows/BlendPortable.h"

#include <immintrin.h>

namespace {

constexpr int32_t kLanes = 8;

template <bool precise> __m256i Mul(__m256i nearOne, __m256i small) {
    if (!precise)
        return _mm256_mullo_epi32(_mm256_srli_epi32(nearOne, 18), _mm256_srli_epi32(small, 14));
    const __m256i even = _mm256_srli_epi64(_mm256_mul_epu32(nearOne, small), 32);
    const __m256i odd = _mm256_mul_epu32(_mm256_srli_epi64(nearOne, 32), _mm256_srli_epi64(small, 32));
    return _mm256_blend_epi32(even, odd, 0xAA);
}

// The high half of a product with a constant.
__m256i MulHigh(__m256i a, uint32_t factor) {
    return Mul<true>(a, _mm256_set1_epi32(static_cast<int32_t>(factor)));
}

__m256i All(uint32_t value) {
    return _mm256_set1_epi32(static_cast<int32_t>(value));
}

// Eight samples of a depth: read as working values, and written where `visible` has a lane set; `old` is what
// was read.
struct Samples8 {
    using Sample = uint8_t;
    static __m256i Read(const Sample *from) {
        // Times 65793 is the byte three times over.
        const __m256i bytes =
            _mm256_broadcastq_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(from)));
        const __m256i thrice = _mm256_setr_epi8(0, 0, 0, -1, 1, 1, 1, -1, 2, 2, 2, -1, 3, 3, 3, -1, //
                                                4, 4, 4, -1, 5, 5, 5, -1, 6, 6, 6, -1, 7, 7, 7, -1);
        return _mm256_shuffle_epi8(bytes, thrice);
    }
    // (w + 32896) / 65793. Over 2^24 − 1 it is 255 w and a half; over 2^24 the half must be larger by 255 at
    // least, for the highest step, and by less than 256, for the lowest.
    static void Write(__m256i working, __m256i old, __m256i visible, Sample *to) {
        const __m256i scaled = _mm256_sub_epi32(_mm256_slli_epi32(working, 8), working);
        const __m256i quotient = _mm256_srli_epi32(_mm256_add_epi32(scaled, All(8388735)), 24);
        const __m256i kept = _mm256_blendv_epi8(_mm256_srli_epi32(old, 16), quotient, visible);
        const __m128i words =
            _mm_packus_epi32(_mm256_castsi256_si128(kept), _mm256_extracti128_si256(kept, 1));
        _mm_storel_epi64(reinterpret_cast<__m128i *>(to), _mm_packus_epi16(words, words));
    }
};

struct Samples16 {
    using Sample = uint16_t;
    static __m256i Load(const Sample *from) {
        return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i *>(from)));
    }
    // v × 16777215 + 16384 over 32768 is 512 v and the rounded rest of −v over 32768.
    static __m256i Read(const Sample *from) {
        const __m256i sample = _mm256_min_epu32(Load(from), _mm256_set1_epi32(32768));
        const __m256i rest = _mm256_srai_epi32(_mm256_sub_epi32(_mm256_set1_epi32(16384), sample), 15);
        return _mm256_add_epi32(_mm256_slli_epi32(sample, 9), rest);
    }
    static void Write(__m256i working, __m256i, __m256i visible, Sample *to) {
        const __m256i rounded = _mm256_srli_epi32(_mm256_add_epi32(working, _mm256_set1_epi32(256)), 9);
        const __m256i kept = _mm256_blendv_epi8(Load(to), rounded, visible);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to),
                         _mm_packus_epi32(_mm256_castsi256_si128(kept), _mm256_extracti128_si256(kept, 1)));
    }
};

struct SamplesFloat {
    using Sample = float;
    // Clamped to 0 .. 1 first; with the sample as the first operand, not-a-number becomes 0.
    static __m256i Read(const Sample *from) {
        const __m256 clamped =
            _mm256_min_ps(_mm256_max_ps(_mm256_loadu_ps(from), _mm256_setzero_ps()), _mm256_set1_ps(1.0f));
        const __m128i low = ReadHalf(_mm256_castps256_ps128(clamped));
        return _mm256_set_m128i(ReadHalf(_mm256_extractf128_ps(clamped, 1)), low);
    }
    static __m128i ReadHalf(__m128 samples) {
        const __m256d scaled = _mm256_mul_pd(_mm256_cvtps_pd(samples), _mm256_set1_pd(16777215.0));
        return _mm256_cvttpd_epi32(_mm256_add_pd(scaled, _mm256_set1_pd(0.5)));
    }
    static __m128 WriteHalf(__m128i working) {
        return _mm256_cvtpd_ps(_mm256_div_pd(_mm256_cvtepi32_pd(working), _mm256_set1_pd(16777215.0)));
    }
    // Highlights stay as they are.
    static void Write(__m256i working, __m256i, __m256i visible, Sample *to) {
        const __m256 old = _mm256_loadu_ps(to);
        const __m256 written = _mm256_set_m128(WriteHalf(_mm256_extracti128_si256(working, 1)),
                                               WriteHalf(_mm256_castsi256_si128(working)));
        const __m256 highlight = _mm256_cmp_ps(old, _mm256_set1_ps(1.0f), _CMP_GE_OQ);
        const __m256 chosen = _mm256_andnot_ps(highlight, _mm256_castsi256_ps(visible));
        _mm256_storeu_ps(to, _mm256_blendv_ps(old, written, chosen));
    }
};

// A colour for each lane.
struct LaneColors {
    __m256i largest, inverse[3];
};

__m256i GatherField(const uint32_t *field, __m256i states) {
    return _mm256_i32gather_epi32(reinterpret_cast<const int *>(field), states, 8);
}

// A colour's four fields lie side by side; states are doubled so that a step of 8 bytes addresses them.
__m256i DoubledStates(const BlendPiece &piece, int32_t i) {
    const __m128i states = _mm_loadu_si128(reinterpret_cast<const __m128i *>(piece.states + i));
    return _mm256_slli_epi32(_mm256_cvtepu16_epi32(states), 1);
}

__m256i LoadValues(const BlendPiece &piece, int32_t i) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(piece.values + i));
}

template <bool precise> __m256i Strength(const BlendPiece &piece, __m256i values, __m256i largest) {
    return Mul<precise>(largest, Mul<precise>(All(piece.tintValue), values));
}

// All bits of the lanes with at least the threshold.
__m256i Visible(__m256i lanes, uint32_t threshold) {
    return _mm256_cmpeq_epi32(_mm256_max_epu32(lanes, All(threshold)), lanes);
}

__m256i Alpha(__m256i strength) {
    const __m256i opaque = _mm256_cmpgt_epi32(_mm256_srli_epi32(strength, 24), _mm256_setzero_si256());
    return _mm256_blendv_epi8(_mm256_slli_epi32(strength, 8), All(0xFFFFFFFEu), opaque);
}

// A product with a working value. In fast mode both factors have less than 15 bits.
template <bool precise> __m256i MulWorking(__m256i nearOne, __m256i working) {
    if (precise)
        return Mul<true>(nearOne, working);
    return _mm256_madd_epi16(_mm256_srli_epi32(nearOne, 18), _mm256_srli_epi32(working, 14));
}

template <bool precise> __m256i ScreenChannel(__m256i old, __m256i inverse, __m256i alpha) {
    const __m256i full = All(0xFFFFFF);
    const __m256i left = MulWorking<precise>(inverse, _mm256_sub_epi32(full, old));
    return _mm256_add_epi32(MulWorking<precise>(alpha, _mm256_sub_epi32(full, left)),
                            MulWorking<precise>(_mm256_sub_epi32(All(0xFFFFFFFEu), alpha), old));
}

template <typename Depth, bool precise, int32_t planes>
void BlendLanes(const BlendPiece &piece, int32_t i, const LaneColors &colors, __m256i strength,
                __m256i visible) {
    using Sample = typename Depth::Sample;
    const __m256i alpha = Alpha(strength);
    if constexpr (planes == 1) {
        Sample *samples = static_cast<Sample *>(piece.samples[0]) + i;
        const __m256i old = Depth::Read(samples);
        __m256i sum = ScreenChannel<precise>(old, colors.inverse[0], alpha);
        sum = _mm256_add_epi32(sum, ScreenChannel<precise>(old, colors.inverse[1], alpha));
        sum = _mm256_add_epi32(sum, ScreenChannel<precise>(old, colors.inverse[2], alpha));
        // A third: the factor is 2^33 / 3 rounded up, exact for every 32-bit sum.
        Depth::Write(_mm256_srli_epi32(MulHigh(sum, 0xAAAAAAABu), 1), old, visible, samples);
    } else {
        for (int32_t plane = 0; plane < planes; ++plane) {
            Sample *samples = static_cast<Sample *>(piece.samples[plane]) + i;
            const __m256i old = Depth::Read(samples);
            Depth::Write(ScreenChannel<precise>(old, colors.inverse[plane], alpha), old, visible, samples);
        }
    }
}

// The first `end` of eight lanes.
__m256i FirstLanes(int32_t end) {
    return _mm256_cmpgt_epi32(_mm256_set1_epi32(end), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
}

// Every value has the same colour.
template <typename Depth, bool precise, int32_t planes>
void BlendUniform(const BlendPiece &piece, int32_t end) {
    const BlendColor &color = piece.colors[0];
    const LaneColors colors{All(color.largest),
                            {All(color.inverse[0]), All(color.inverse[1]), All(color.inverse[2])}};
    for (int32_t i = 0; i < end; i += kLanes) {
        const __m256i strength = Strength<precise>(piece, LoadValues(piece, i), colors.largest);
        const __m256i visible =
            _mm256_and_si256(Visible(strength, piece.threshold), FirstLanes(piece.count - i));
        if (!_mm256_testz_si256(visible, visible))
            BlendLanes<Depth, precise, planes>(piece, i, colors, strength, visible);
    }
}

template <typename Depth, bool precise, int32_t planes>
void BlendByState(const BlendPiece &piece, int32_t end) {
    const uint32_t *fields = &piece.colors[0].largest;
    for (int32_t i = 0; i < end; i += kLanes) {
        const __m256i values = LoadValues(piece, i), bright = Visible(values, piece.leastValue);
        if (_mm256_testz_si256(bright, bright))
            continue;
        const __m256i states = DoubledStates(piece, i);
        LaneColors colors{GatherField(fields, states), {}};
        const __m256i strength = Strength<precise>(piece, values, colors.largest);
        const __m256i visible =
            _mm256_and_si256(Visible(strength, piece.threshold), FirstLanes(piece.count - i));
        if (_mm256_testz_si256(visible, visible))
            continue;
        for (int32_t c = 0; c < 3; ++c)
            colors.inverse[c] = GatherField(fields + 1 + c, states);
        BlendLanes<Depth, precise, planes>(piece, i, colors, strength, visible);
    }
}

// What is left of a row too short for eight lanes at its end goes to the portable form.
template <typename Sample>
void BlendRest(const BlendPiece &piece, int32_t done, void (*portable)(const BlendPiece &piece)) {
    if (done >= piece.count)
        return;
    BlendPiece rest = piece;
    rest.values += done;
    rest.states = piece.states ? piece.states + done : nullptr;
    rest.count -= done;
    for (int32_t plane = 0; plane < piece.planes; ++plane)
        rest.samples[plane] = static_cast<Sample *>(piece.samples[plane]) + done;
    portable(rest);
}

template <typename Depth, bool precise, int32_t planes>
void BlendAs(const BlendPiece &piece, void (*portable)(const BlendPiece &piece)) {
    const int32_t whole = (piece.count + kLanes - 1) / kLanes * kLanes;
    const int32_t end = whole <= piece.room ? whole : whole - kLanes;
    if (piece.states)
        BlendByState<Depth, precise, planes>(piece, end);
    else
        BlendUniform<Depth, precise, planes>(piece, end);
    BlendRest<typename Depth::Sample>(piece, end, portable);
}

template <typename Depth>
void BlendDepth(const BlendPiece &piece, void (*portable)(const BlendPiece &piece)) {
    if (piece.precise)
        piece.planes == 1 ? BlendAs<Depth, true, 1>(piece, portable)
                          : BlendAs<Depth, true, 3>(piece, portable);
    else
        piece.planes == 1 ? BlendAs<Depth, false, 1>(piece, portable)
                          : BlendAs<Depth, false, 3>(piece, portable);
}

} // namespace

void BlendAvx2Bytes(const BlendPiece &piece) {
    BlendDepth<Samples8>(piece, BlendPortableBytes);
}
void BlendAvx2Words(const BlendPiece &piece) {
    BlendDepth<Samples16>(piece, BlendPortableWords);
}
void BlendAvx2Floats(const BlendPiece &piece) {
    BlendDepth<SamplesFloat>(piece, BlendPortableFloats);
}
