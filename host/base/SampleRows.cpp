#include "host/base/SampleRows.h"

#include "diag/Compiler.h"

#include <tmmintrin.h>

#include <cstring>

namespace host {

template <size_t size>
static void CopySamples(uint8_t *to, size_t toStep, const uint8_t *from, size_t fromStep, size_t count) {
    for (size_t i = 0; i < count; i++)
        std::memcpy(to + i * toStep, from + i * fromStep, size);
}

void CopyRow(uint8_t *to, size_t toStep, const uint8_t *from, size_t fromStep, size_t count, size_t size) {
    if (toStep == size && fromStep == size)
        std::memcpy(to, from, count * size);
    else if (size == 1)
        CopySamples<1>(to, toStep, from, fromStep, count);
    else if (size == 2)
        CopySamples<2>(to, toStep, from, fromStep, count);
    else
        CopySamples<4>(to, toStep, from, fromStep, count);
}

// --- Three planes of bytes: sixteen pixels are three registers either way, and a byte shuffle of each of
// them makes a part of each of the others.

constexpr size_t kLanes = 16;

struct Shuffles {
    alignas(16) uint8_t split[3][3][kLanes]; // of the plane, from the register of pixels
    alignas(16) uint8_t join[3][3][kLanes];  // of the register of pixels, from the plane
};

static consteval Shuffles MakeShuffles() {
    constexpr uint8_t kZero = 0x80;
    Shuffles made{};
    for (size_t plane = 0; plane < 3; plane++)
        for (size_t part = 0; part < 3; part++)
            for (size_t lane = 0; lane < kLanes; lane++) {
                const size_t at = 3 * lane + plane, byte = kLanes * part + lane;
                made.split[plane][part][lane] =
                    at / kLanes == part ? static_cast<uint8_t>(at % kLanes) : kZero;
                made.join[part][plane][lane] = byte % 3 == plane ? static_cast<uint8_t>(byte / 3) : kZero;
            }
    return made;
}
static constexpr Shuffles kShuffles = MakeShuffles();

BX_FOR_SSSE3 static __m128i Shuffle3(const __m128i *parts, const uint8_t (*shuffles)[kLanes]) {
    const auto shuffle = [](const uint8_t *lanes) {
        return _mm_load_si128(reinterpret_cast<const __m128i *>(lanes));
    };
    return _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(parts[0], shuffle(shuffles[0])),
                                     _mm_shuffle_epi8(parts[1], shuffle(shuffles[1]))),
                        _mm_shuffle_epi8(parts[2], shuffle(shuffles[2])));
}

// Both give the count of pixels done.
BX_FOR_SSSE3 static size_t SplitThree(uint8_t *const *to, const uint8_t *from, size_t count) {
    size_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        __m128i parts[3];
        std::memcpy(parts, from + 3 * i, sizeof(parts));
        for (size_t plane = 0; plane < 3; plane++) {
            const __m128i samples = Shuffle3(parts, kShuffles.split[plane]);
            std::memcpy(to[plane] + i, &samples, sizeof(samples));
        }
    }
    return i;
}

BX_FOR_SSSE3 static size_t JoinThree(uint8_t *to, const uint8_t *const *from, size_t count) {
    size_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        __m128i planes[3];
        for (size_t plane = 0; plane < 3; plane++)
            std::memcpy(&planes[plane], from[plane] + i, sizeof(planes[plane]));
        for (size_t part = 0; part < 3; part++) {
            const __m128i pixels = Shuffle3(planes, kShuffles.join[part]);
            std::memcpy(to + 3 * i + kLanes * part, &pixels, sizeof(pixels));
        }
    }
    return i;
}

static bool HasShuffle() {
    static const bool has = BX_PROCESSOR_HAS_SSSE3;
    return has;
}

void SplitPixels(uint8_t *const *to, size_t planes, const uint8_t *from, size_t bands, size_t count,
                 size_t size) {
    const bool isThree = planes == 3 && bands == 3 && size == 1 && HasShuffle();
    const size_t done = isThree ? SplitThree(to, from, count) : 0;
    for (size_t plane = 0; plane < planes; plane++)
        CopyRow(to[plane] + done * size, size, from + (done * bands + plane) * size, bands * size,
                count - done, size);
}

void JoinPixels(uint8_t *to, const uint8_t *const *from, size_t planes, size_t count, size_t size) {
    const size_t done = planes == 3 && size == 1 && HasShuffle() ? JoinThree(to, from, count) : 0;
    for (size_t plane = 0; plane < planes; plane++)
        CopyRow(to + (done * planes + plane) * size, planes * size, from[plane] + done * size, size,
                count - done, size);
}

} // namespace host
