#include "render/KeptRun.h"

#include "engine/DebugImages.h"
#include "engine/DebugPictures.h"
#include "engine/image/FixedPoint.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"
#include "render/StampPicture.h"

namespace {

bool gKeepLights;

// What belongs to the kept run beside the global table and the kept image.
struct KeptRun {
    bool kept;
    RenderSettings settings;
    int32_t bytesPerSample;
};
KeptRun gRun;

bool HasImage() {
    return gRun.kept && GetKeptImage().image.samples;
}

} // namespace

void ChooseWhatToKeep(bool lights, bool images) {
    gKeepLights = lights || images;
    gKeepAnalysisImage = images;
    if (!gKeepLights)
        ForgetRun();
}

LightSourceTable TakeTableToKeep() {
    if (!gKeepLights)
        return LightSourceTable{};
    const LightSourceTable taken = *gLightSourceTable;
    *gLightSourceTable = LightSourceTable{};
    return taken;
}

void KeepRun(const LightSourceTable &table, const RenderSettings &settings, int32_t bytesPerSample) {
    if (!gKeepLights)
        return;
    *gLightSourceTable = table;
    gRun = {true, settings, bytesPerSample};
}

void ForgetRun() {
    if (gRun.kept)
        FreeTableRecords(gLightSourceTable);
    FreeKeptImage();
    gRun = KeptRun{};
}

bool IsRunKept() {
    return gRun.kept;
}

uint32_t KeptCutLevel() {
    return ThresholdCutLevel(gRun.settings.threshold);
}

bool FindDebugPicture(int32_t choice, DebugPicturePlace *place) {
    if (choice < 0 || choice >= kDebugPictures || !HasImage())
        return false;
    if (choice != kStampPicture) {
        *place = {GetKeptImage().image.bounds, GetKeptImage().image.scale};
        return true;
    }
    UsePreciseMode(gRun.bytesPerSample);
    *place = {FindStampArea(gRun.settings), 1.0};
    FreeRenderState();
    return true;
}

bool DrawDebugPicture(int32_t choice, const DebugPicturePlace &place, uint8_t *bgra) {
    if (!HasImage())
        return false;
    switch (choice) {
    case kAnalysisPicture:
        DrawAnalysisPicture(GetKeptImage(), bgra);
        return true;
    case kShadedPicture:
        DrawShadedPicture(GetKeptImage(), bgra);
        return true;
    case kLightsPicture:
        DrawLightsPicture(GetKeptImage(), GetLightSourceTable(), KeptCutLevel(), bgra);
        return true;
    case kStampPicture: {
        UsePreciseMode(gRun.bytesPerSample);
        const bool drawn = DrawStampPicture(gRun.settings, place.area, bgra);
        FreeRenderState();
        return drawn;
    }
    default:
        return false;
    }
}
