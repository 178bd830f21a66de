#include "render/RenderState.h"

#include "diag/BufferUsage.h"
#include "render/stamp/StarBuilder.h"

namespace {

bool BuildStarStamp(StarStamp *stamp, int32_t px, int32_t py) {
    return DrawStar(gRenderState.context, *gRenderState.abort, &gRenderState.stars.tables, stamp, px, py);
}

// Without memory for its values there is no flare, and no report: meant so.
bool BuildFlareStamp(FlareStamp *stamp, int32_t px, int32_t py) {
    ValueTable &values = gRenderState.flares.values;
    if (!values.values && !BuildFlareTable(gRenderState.context, &values))
        return false;
    *stamp = MakeFlare(gRenderState.context, px, py);
    return true;
}

void EmptyStars() {
    for (StarStamp &stamp : gRenderState.stars.stamps)
        EmptyStamp(&stamp);
}

void EmptyFlares() {
    for (FlareStamp &stamp : gRenderState.flares.stamps)
        stamp = FlareStamp{};
    FreeValueTable(&gRenderState.flares.values);
}

} // namespace

RenderState gRenderState;
StampBuilders gStampBuilders = {BuildStarStamp, BuildFlareStamp};

void UpdateStamps(const StampContext &wanted) {
    if (!StarStampsServe(gRenderState.context, wanted)) {
        EmptyStars();
        BeginStars(wanted, &gRenderState.stars.tables);
    }
    if (!FlareStampsServe(gRenderState.context, wanted))
        EmptyFlares();
    gRenderState.context = wanted;
}

size_t ColorBytes(int32_t workers) {
    return sizeof(BlendColor) * kRainbowStates * static_cast<size_t>(workers);
}

void FreeColors(ColorTables *colors) {
    CountedFree(colors->colors, ColorBytes(colors->workers));
    *colors = ColorTables{0, nullptr};
}

const StarStamp &NeedStarStamp(int32_t px, int32_t py) {
    StarStamp &stamp = gRenderState.stars.stamps[px * kPhases + py];
    if (stamp.count == 0)
        gStampBuilders.star(&stamp, px, py);
    return stamp;
}

const FlareStamp &NeedFlareStamp(int32_t px, int32_t py) {
    FlareStamp &stamp = gRenderState.flares.stamps[px * kPhases + py];
    if (!stamp.built)
        gStampBuilders.flare(&stamp, px, py);
    return stamp;
}

void ResetRenderState() {
    ForgetLowMemory();
    EmptyStars();
    DropStarTables(&gRenderState.stars.tables);
    EmptyFlares();
    gRenderState.context = StampContext{};
}

void FreeRenderState() {
    ResetRenderState();
    for (StarStamp &stamp : gRenderState.stars.stamps)
        FreeStamp(&stamp);
    FreeColors(&gRenderState.colors);
}
