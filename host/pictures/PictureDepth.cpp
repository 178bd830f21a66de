#include "host/pictures/PictureDepth.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace host {

template <typename Sample> static float White() {
    return std::is_same_v<Sample, float> ? 1.0f : static_cast<float>(std::numeric_limits<Sample>::max());
}

template <typename From, typename To> static To ConvertSample(From sample) {
    if constexpr (std::is_same_v<To, float>) {
        return static_cast<float>(sample) / White<From>();
    } else if constexpr (std::is_same_v<From, float>) {
        const float bounded = sample > 0.0f ? std::min(sample, 1.0f) : 0.0f; // not-a-number is no light
        return static_cast<To>(std::lround(bounded * White<To>()));
    } else if constexpr (sizeof(From) < sizeof(To)) {
        return static_cast<To>(sample * 257u);
    } else {
        return static_cast<To>((sample + 128u) / 257u);
    }
}

template <typename From, typename To> static void ConvertPlane(Bytes &plane) {
    const size_t count = plane.size() / sizeof(From);
    Bytes converted(count * sizeof(To));
    for (size_t i = 0; i < count; i++) {
        const To sample = ConvertSample<From, To>(NumberAt<From>(plane.data() + i * sizeof(From)));
        std::memcpy(converted.data() + i * sizeof(To), &sample, sizeof(sample));
    }
    plane = std::move(converted);
}

void ConvertDepth(Picture &picture, int32_t depth) {
    using Convert = void (*)(Bytes &);
    static constexpr Convert kConversions[3][3] = {
        {nullptr, ConvertPlane<uint8_t, uint16_t>, ConvertPlane<uint8_t, float>},
        {ConvertPlane<uint16_t, uint8_t>, nullptr, ConvertPlane<uint16_t, float>},
        {ConvertPlane<float, uint8_t>, ConvertPlane<float, uint16_t>, nullptr}};
    const auto index = [](int32_t bits) { return bits == 8 ? 0 : bits == 16 ? 1 : 2; };
    if (const Convert convert = kConversions[index(picture.depth)][index(depth)])
        for (Bytes &plane : picture.planes)
            convert(plane);
    picture.depth = depth;
}

} // namespace host
