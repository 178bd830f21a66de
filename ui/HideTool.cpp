#include "ui/HideTool.h"

#include "ui/PreviewImages.h"
#include "ui/ProxyUpdateTask.h"
#include "ui/ViewCursor.h"

#include <algorithm>
#include <cstdlib>

namespace {

// Reach of a click, in quarter pixels of the document; the light source table uses the same.
constexpr double kReachAtOnePercent = 8000.0;
constexpr int64_t kSmallestReach = 80;
// Half the extent of a mark on the display, so that one just outside is drawn too.
constexpr int32_t kMarkMargin = 16;

bool IsEligible(const LightSource &source, int32_t mode) {
    switch (mode) {
    case kHideEffect:
    case kForceEffect:
        return true;
    case kRestoreHidden:
        return source.State == 0;
    case kRestoreForced:
        return source.State == 2;
    }
    return false;
}

uint32_t StateAfter(const LightSource &source, int32_t mode) {
    if (mode == kHideEffect)
        return 0;
    return mode == kForceEffect ? 2 : source.SavedState;
}

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

bool IsChangedByMode(const LightSource &source, int32_t mode) {
    return IsEligible(source, mode) && StateAfter(source, mode) != source.State;
}

int32_t FindLightSourceAt(int32_t x, int32_t y, double zoomPercent, int32_t mode) {
    const LightSourceTableView table = GetLightSourceTable();
    const int64_t reach =
        std::max(static_cast<int64_t>(kReachAtOnePercent / ClampZoom(zoomPercent)), kSmallestReach);
    int64_t nearest = reach * reach;
    int32_t found = -1;
    for (uint32_t i = 0; i < table.count; ++i) {
        const LightSource &source = table.records[i];
        const int64_t dx = (int64_t{x} - source.X) * 4 - source.XQuarter;
        const int64_t dy = (int64_t{y} - source.Y) * 4 - source.YQuarter;
        if (std::abs(dx) >= reach || std::abs(dy) >= reach || dx * dx + dy * dy >= nearest)
            continue;
        if (!IsEligible(source, mode))
            continue;
        nearest = dx * dx + dy * dy;
        found = static_cast<int32_t>(i);
    }
    return found;
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
    if (ChangeEffectAt(point.x, point.y, view.zoom, mode) < 0)
        return false;
    gLastHiddenLightSource = static_cast<uint32_t>(index);
    return true;
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
