#include "ui/view/FirstView.h"

#include "engine/table/LightSourceTable.h"
#include "ui/view/StateLine.h"
#include "ui/view/ViewTools.h"

namespace {

// The table begins with the brightest.
const LightSource *BrightestStar(int32_t threshold) {
    const LightSourceTableView table = GetLightSourceTable();
    const uint32_t cutLevel = ThresholdCutLevel(threshold);
    for (uint32_t i = 0; i < table.count; ++i)
        if (IsLightSourceSelected(table.records[i], cutLevel))
            return &table.records[i]; // cppcheck-suppress returnDanglingLifetime  ; a view: not its records
    return nullptr;
}

} // namespace

void ShowSomeStar(int32_t threshold) {
    const LightSource *star = BrightestStar(threshold);
    if (!star || CountLights(threshold).starsInView > 0)
        return;
    const double scale = gViewTools.view.zoom / 100.0; // assistive programs zoom without any key or click
    CenterPreview((star->X + star->XQuarter / 4.0 + 0.5) * scale,
                  (star->Y + star->YQuarter / 4.0 + 0.5) * scale);
}
