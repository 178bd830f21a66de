#include "ui/view/HideTool.h"

#include "engine/table/HideEffects.h"
#include "engine/table/LightSourceTable.h"
#include "ui/preview/PreviewImages.h"
#include "ui/view/ViewCursor.h"

namespace {

// Half the extent of a mark on the display, so that one just outside is drawn too.
constexpr int32_t kMarkMargin = 16;

bool IsMarked(const LightMarks &marks, const LightSource &source, int32_t index) {
    if (!IsChangedByMode(source, marks.mode))
        return false;
    return marks.inRect ? RectContains(marks.rect, source.X, source.Y) : index == marks.single;
}

} // namespace

int32_t HideModeOfMouseState(int32_t mouseState) {
    switch (mouseState) {
    case kMouseHide:
    case kMouseShowAlt:
        return kHideEffect;
    case kMouseHideAlt:
    case kMouseShow:
        return kRestoreHidden;
    }
    return kNoHideMode;
}

int VisitMarkedLights(const LightMarks &marks, const ViewState &view,
                      void (*mark)(ViewPoint client, void *context), void *context) {
    if (!marks.active)
        return 0;
    const IntRect &d = view.display;
    const IntRect seen = {d.left - kMarkMargin, d.top - kMarkMargin, d.right + kMarkMargin,
                          d.bottom + kMarkMargin};
    const LightSourceTableView table = GetLightSourceTable();
    int count = 0;
    for (uint32_t i = 0; i < table.count; ++i) {
        const LightSource &source = table.records[i];
        if (!IsMarked(marks, source, static_cast<int32_t>(i)))
            continue;
        const ViewPoint client =
            ClientFromDocument(view, source.X * 4 + source.XQuarter, source.Y * 4 + source.YQuarter);
        if (!RectContains(seen, client.x, client.y))
            continue;
        mark(client, context);
        ++count;
    }
    return count;
}

bool ChangeLightAt(const ViewState &view, ViewPoint client, int32_t mode) {
    const ViewPoint point = DocumentFromClient(view, client);
    const int32_t index = FindLightSourceAt(point.x, point.y, view.zoom, mode);
    if (index < 0 || !IsChangedByMode(GetLightSourceTable().records[index], mode))
        return false;
    return ChangeEffectAt(point.x, point.y, view.zoom, mode) >= 0;
}

bool ChangeLightsInRect(const ViewState &view, const IntRect &client, int32_t mode) {
    const IntRect rect = DocumentRectFromClient(view, client);
    const LightSourceTableView table = GetLightSourceTable();
    bool any = false;
    for (uint32_t i = 0; i < table.count && !any; ++i)
        any = RectContains(rect, table.records[i].X, table.records[i].Y) &&
              IsChangedByMode(table.records[i], mode);
    return any && ChangeEffectsInRect(rect, mode) > 0;
}
