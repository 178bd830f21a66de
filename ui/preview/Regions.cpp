#include "ui/preview/Regions.h"

#include "diag/BufferUsage.h"
#include "diag/ErrorReport.h"
#include "ui/pixels/PreviewGeometry.h"

namespace {

void ReportStep(const RegionStep &step) {
    ReportError({step.site, kDebugMessage, 0}, kStopIcon, kTitleUnexpected, "%s", step.text);
}

void ReportSystemStep(const RegionStep &step) {
    ReportError({step.site, kSystemError, GetLastError()}, kStopIcon, kTitleUnexpected, "%s", step.text);
}

RGNDATA *DataOf(const RegionRects &rects) {
    return static_cast<RGNDATA *>(rects.data);
}

HRGN MapRegion(HRGN region, double zoom, IntRect (*map)(const IntRect &, double)) {
    RegionRects rects{};
    if (!GetRegionRects(region, &rects))
        return nullptr;
    if (rects.count == 0) { // some systems make no region of an empty list
        FreeRegionRects(&rects);
        return CreateRectRgn(0, 0, 0, 0);
    }
    auto *list = reinterpret_cast<RECT *>(DataOf(rects)->Buffer);
    RECT box{};
    for (uint32_t i = 0; i < rects.count; ++i) {
        const IntRect mapped = map({list[i].left, list[i].top, list[i].right, list[i].bottom}, zoom);
        list[i] = {mapped.left, mapped.top, mapped.right, mapped.bottom};
        UnionRect(&box, &box, &list[i]);
    }
    DataOf(rects)->rdh.rcBound = box;
    const HRGN mapped = ExtCreateRegion(nullptr, static_cast<DWORD>(rects.bytes), DataOf(rects));
    FreeRegionRects(&rects);
    return mapped;
}

} // namespace

HRGN CreateRegion(const RegionStep &step) {
    const HRGN region = CreateRectRgn(0, 0, 0, 0);
    if (!region)
        ReportSystemStep(step);
    return region;
}

void DeleteRegion(HRGN *region) {
    if (*region)
        DeleteObject(*region);
    *region = nullptr;
}

bool SetRegionRect(HRGN region, const IntRect &rect, const RegionStep &step) {
    if (region && SetRectRgn(region, rect.left, rect.top, rect.right, rect.bottom))
        return true;
    ReportSystemStep(step);
    return false;
}

bool CombineRegions(HRGN region, HRGN a, HRGN b, int mode, const RegionStep &step) {
    if (region && CombineRgn(region, a, b, mode) != ERROR)
        return true;
    ReportStep(step);
    return false;
}

bool IsRegionFilled(HRGN region) {
    RECT box;
    const int kind = region ? GetRgnBox(region, &box) : ERROR;
    return kind == SIMPLEREGION || kind == COMPLEXREGION;
}

IntRect RegionBox(HRGN region) {
    RECT box;
    const int kind = region ? GetRgnBox(region, &box) : ERROR;
    if (kind != SIMPLEREGION && kind != COMPLEXREGION)
        return {0, 0, 0, 0};
    return {box.left, box.top, box.right, box.bottom};
}

bool RegionHolds(HRGN outer, HRGN inner) {
    HRGN outside = CreateRectRgn(0, 0, 0, 0);
    const int kind = outside ? CombineRgn(outside, inner, outer, RGN_DIFF) : ERROR;
    DeleteRegion(&outside);
    return kind == NULLREGION || kind == ERROR;
}

bool GetRegionRects(HRGN region, RegionRects *rects) {
    const DWORD bytes = region ? GetRegionData(region, 0, nullptr) : 0;
    void *data = bytes ? CountedAlloc(bytes) : nullptr;
    if (!data)
        return false;
    if (!GetRegionData(region, bytes, static_cast<RGNDATA *>(data))) {
        CountedFree(data, bytes);
        return false;
    }
    auto *read = static_cast<RGNDATA *>(data);
    *rects = {reinterpret_cast<const RECT *>(read->Buffer), read->rdh.nCount, data, bytes};
    return true;
}

void FreeRegionRects(RegionRects *rects) {
    CountedFree(rects->data, rects->bytes);
    *rects = {};
}

HRGN ScaleRegion(HRGN region, double zoom) {
    return MapRegion(region, zoom, ScaleRect);
}

HRGN UnscaleRegion(HRGN region, double zoom) {
    return MapRegion(region, zoom, UnscaleRect);
}
