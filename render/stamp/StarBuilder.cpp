#include "render/stamp/StarBuilder.h"

#include "diag/ErrorReport.h"
#include "engine/image/FixedPoint.h"
#include "render/stamp/SecondarySpikes.h"

#include <cmath>

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
        if (abort.load(std::memory_order_relaxed) != 0) {
            EmptyStamp(stamp);
            return false;
        }
        if (AddArm(context, tables, px, py, shapes[i], stamp))
            continue;
        ReportLowMemory();
        return false;
    }
    DropUnusedTables(tables);
    return true;
}

void ReportLowMemory() {
    ReportError({kLowMemorySite, kUserMessage, 0}, kWarningIcon, kTitleWarning,
                "Low memory.  Check image - some effects may not be rendered.");
}
