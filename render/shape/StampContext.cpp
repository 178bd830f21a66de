#include "render/shape/StampContext.h"

#include "engine/image/FixedPoint.h"
#include "engine/image/Geometry.h"
#include "render/shape/ParameterTable.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

// No entry further out than this fits its 16-bit offset, so no walk need go on: 4 × 32770 quarter pixels.
constexpr int32_t kMaxLimit = 131080;

int32_t LimitInQuarters(int32_t pixels, double scale) {
    const double limit = pixels * scale * 0.04;
    return limit < kMaxLimit ? std::max(1 + static_cast<int32_t>(limit), 0) : kMaxLimit;
}

// What both kinds of stamps depend on.
bool SameFrame(const StampContext &a, const StampContext &b) {
    return a.settings.scale == b.settings.scale && a.preciseMode == b.preciseMode && a.floor == b.floor &&
           a.imageWidth == b.imageWidth && a.diagonal == b.diagonal && a.limitX == b.limitX &&
           a.limitY == b.limitY;
}

// Whether no parameter differs that stamps of this kind, or of both, are built with.
bool SameParameters(const RenderSettings &a, const RenderSettings &b, StampUse least) {
    return std::all_of(std::begin(kParameters), std::end(kParameters), [&](const ParameterInfo &p) {
        return p.stamps < least || a.*p.setting == b.*p.setting;
    });
}

} // namespace

StampContext MakeStampContext(const RenderSettings &settings) {
    StampContext context;
    context.settings = settings;
    context.imageWidth = gImageGeometry.width;
    context.diagonal = std::max(gImageGeometry.diagonal, 1);
    context.limitX = LimitInQuarters(gImageGeometry.width, settings.scale);
    context.limitY = LimitInQuarters(gImageGeometry.height, settings.scale);
    context.preciseMode = gPreciseMode;
    context.floor = gFloor;
    context.needsTables = true;
    return context;
}

bool StarStampsServe(const StampContext &built, const StampContext &wanted) {
    return SameFrame(built, wanted) && built.needsTables >= wanted.needsTables &&
           built.settings.effectType == wanted.settings.effectType &&
           SameParameters(built.settings, wanted.settings, StampUse::kStars);
}

bool FlareStampsServe(const StampContext &built, const StampContext &wanted) {
    return SameFrame(built, wanted) &&
           SameParameters(built.settings, wanted.settings, StampUse::kStarsAndFlares);
}

double StarSharpnessFactor(const StampContext &context) {
    const double edge = std::pow(context.settings.spikeSharpness / 100.0, 3.5) + 0.003;
    return edge * 500000.0 / context.diagonal / context.settings.scale;
}

double StarWidthFactor(const StampContext &context) {
    return context.settings.scale * 0.005;
}

uint32_t SpikeBrightness(int32_t intensityPercent) {
    return static_cast<uint32_t>(std::pow(intensityPercent / 100.0, 2.8) * kFractionOne);
}
