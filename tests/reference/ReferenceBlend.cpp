#include "tests/reference/ReferenceBlend.h"

#include <algorithm>

namespace reference {

namespace {

constexpr uint32_t kOne = 4294967294u;
constexpr uint32_t kFull = 16777215u;

uint32_t Normalize(uint32_t channel, uint32_t largest) {
    if (largest == 0)
        return kOne;
    const uint64_t quotient = (static_cast<uint64_t>(channel) << 32) / largest;
    return static_cast<uint32_t>(std::min<uint64_t>(quotient, kOne));
}

Color Screen(Precision precision, const Color &source, uint32_t value, const Color &destination) {
    const uint32_t largest = std::max({source[0], source[1], source[2]});
    const uint32_t strength = Product(precision, largest, value);
    const uint32_t alpha = strength < 16777216u ? strength * 256u : kOne;
    Color result{};
    for (size_t i = 0; i < 3; ++i) {
        const uint32_t dark =
            Product(precision, kOne - Normalize(source[i], largest), kFull - destination[i]);
        result[i] =
            Product(precision, alpha, kFull - dark) + Product(precision, kOne - alpha, destination[i]);
    }
    return result;
}

} // namespace

Color Blend(Precision precision, uint32_t mode, const Color &source, uint32_t value,
            const Color &destination) {
    if (mode == kScreenMode)
        return Screen(precision, source, value, destination);
    Color result = destination;
    for (size_t i = 0; i < 3; ++i) {
        const uint32_t added = Product(precision, value, source[i]);
        if (mode == kNormalMode)
            result[i] = Product(precision, kOne - value, destination[i]) + added;
        else if (mode == kAddMode)
            result[i] = destination[i] + added;
    }
    return result;
}

} // namespace reference
