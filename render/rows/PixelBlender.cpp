#include "render/rows/PixelBlender.h"

#include "diag/ErrorReport.h"

namespace {

constexpr uint32_t kUnknownModeSite = 249;
constexpr uint32_t kFullStrength = 1u << 24; // strengths from here on are opaque

void BlendNormal(const Tint &source, WorkingPixel *pixel) {
    for (int c = 0; c < 3; ++c)
        pixel->channel[c] =
            Mul(kFractionOne - source.value, pixel->channel[c]) + Mul(source.value, source.channel[c]);
}

// Without a clamp: meant so.
void BlendAdd(const Tint &source, WorkingPixel *pixel) {
    for (int c = 0; c < 3; ++c)
        pixel->channel[c] += Mul(source.value, source.channel[c]);
}

} // namespace

uint32_t NormaliseChannel(uint32_t channel, uint32_t largest) {
    if (largest == 0)
        return kFractionOne;
    const uint64_t share = (uint64_t{channel} << 32) / largest;
    return static_cast<uint32_t>(std::min<uint64_t>(share, kFractionOne));
}

void BlendScreen(const Tint &source, WorkingPixel *pixel) {
    const uint32_t largest = LargestChannel(source.channel);
    const uint32_t strength = Mul(largest, source.value);
    const uint32_t alpha = strength < kFullStrength ? strength * 256 : kFractionOne;
    for (int c = 0; c < 3; ++c) {
        const uint32_t normalised = NormaliseChannel(source.channel[c], largest);
        const uint32_t old = pixel->channel[c];
        const uint32_t left = Mul(kFractionOne - normalised, kFullIntensity - old);
        pixel->channel[c] = Mul(alpha, kFullIntensity - left) + Mul(kFractionOne - alpha, old);
    }
}

void BlendPixel(uint32_t mode, const Tint &source, WorkingPixel *pixel) {
    switch (mode) {
    case kBlendScreen:
        return BlendScreen(source, pixel);
    case kBlendNormal:
        return BlendNormal(source, pixel);
    case kBlendAdd:
        return BlendAdd(source, pixel);
    default:
        ReportError({kUnknownModeSite, kUserMessage, 0}, kStopIcon, kTitleUnexpected,
                    "Blending mode not implemented.");
    }
}
