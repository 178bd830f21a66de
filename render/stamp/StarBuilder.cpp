#include "render/stamp/StarBuilder.h"

#include "diag/ErrorReport.h"
#include "engine/image/FixedPoint.h"
#include "render/stamp/SecondarySpikes.h"

#include <cmath>
#include <utility>

namespace {

constexpr uint32_t kLowMemorySite = 237;

// The arms of the effect type; the number of them.
int32_t ListPrimaryArms(const StampContext &context, ArmShape *shapes) {
    const RenderSettings &settings = context.settings;
    const ArmList list = LayoutStar({settings.effectType, settings.angle, settings.numberOfPoints,
                                     settings.length, SpikeBrightness(settings.intensity)});
    for (int32_t i = 0; i < list.count; ++i)
        shapes[i] = ArmShape{StarSharpnessFactor(context), StarWidthFactor(context), list.arms[i].angle,
                             list.arms[i].length,          settings.intensity,       list.arms[i].brightness};
    return list.count;
}

// Since the start of the run: what fails for good would otherwise be told for every light source. A preview,
// which is only logged, does not keep the final render from telling it.
bool gIsLowMemoryReported[2];

} // namespace

bool DrawStar(const StampContext &context, const std::atomic<uint8_t> &abort, StarTables *tables,
              StarStamp *stamp, int32_t px, int32_t py) {
    EmptyStamp(stamp);
    if (context.settings.length <= 0)
        return true;
    ArmShape shapes[kMaxStampArms];
    int32_t count = ListPrimaryArms(context, shapes);
    if (context.settings.secondaryIntensity > 0)
        count += ListSecondarySpikes(context, shapes + count);
    for (int32_t i = 0; i < count; ++i) {
        const bool isAdded = AddArm(context, tables, px, py, shapes[i], abort, stamp);
        if (abort.load(std::memory_order_relaxed) != 0) {
            EmptyStamp(stamp);
            return false;
        }
        if (isAdded)
            continue;
        ReportLowMemory();
        return false;
    }
    DropUnusedTables(tables);
    return true;
}

void ReportLowMemory() {
    if (std::exchange(gIsLowMemoryReported[gPreciseMode], true))
        return;
    ReportError({kLowMemorySite, kUserMessage, 0}, kWarningIcon, kTitleWarning,
                "Low memory.  Check image - some effects may not be rendered.");
}

void ForgetLowMemory() {
    gIsLowMemoryReported[0] = gIsLowMemoryReported[1] = false;
}
