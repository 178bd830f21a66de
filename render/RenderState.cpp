#include "render/RenderState.h"

#include "render/SoftFlare.h"
#include "render/SpikeProfile.h"
#include "render/StarBuilder.h"

namespace {

bool BuildStarStamp(StarStamp *stamp, int32_t px, int32_t py) {
    return DrawStar(gRenderState.context, stamp, px, py);
}

bool BuildFlareStamp(StarStamp *stamp, int32_t px, int32_t py) {
    return DrawFlare(gRenderState.context, stamp, px, py);
}

void EmptySet(StampSet *set) {
    for (StarStamp &stamp : set->stamps)
        EmptyStamp(&stamp);
}

void FreeSet(StampSet *set) {
    for (StarStamp &stamp : set->stamps)
        FreeStamp(&stamp);
}

} // namespace

RenderState gRenderState = {StampContext{}, StampSet{{}, BuildStarStamp}, StampSet{{}, BuildFlareStamp}};

void UpdateStamps(const RenderSettings &settings) {
    const StampContext wanted = MakeStampContext(settings);
    if (!StarStampsServe(gRenderState.context, wanted))
        EmptySet(&gRenderState.stars);
    if (!FlareStampsServe(gRenderState.context, wanted))
        EmptySet(&gRenderState.flares);
    gRenderState.context = wanted;
}

void ResetRenderState() {
    EmptySet(&gRenderState.stars);
    EmptySet(&gRenderState.flares);
    ResetSpikeProfile();
    ResetFlareValues();
    gRenderState.context = StampContext{};
}

void FreeRenderState() {
    ResetRenderState();
    FreeSet(&gRenderState.stars);
    FreeSet(&gRenderState.flares);
}
