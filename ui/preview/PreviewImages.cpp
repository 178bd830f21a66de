#include "ui/preview/PreviewImages.h"

#include "diag/BufferUsage.h"
#include "diag/ErrorReport.h"
#include "engine/table/HideEffects.h"
#include "engine/table/LightSourceTable.h"
#include "ui/pixels/PreviewDrawing.h"
#include "ui/preview/PreviewInvariants.h"
#include "ui/preview/PreviewProxies.h"
#include "ui/preview/PreviewStars.h"

#include <algorithm>

namespace {

constexpr uint32_t kSiteLayer = 695;

bool HoldsRect(const IntRect &outer, const IntRect &inner) {
    return outer.left <= inner.left && outer.top <= inner.top && outer.right >= inner.right &&
           outer.bottom >= inner.bottom;
}

// The newest of what there is lies on top: pixels that are exact, unless the draft is to hide them yet, then
// the draft, then what was exact once.
void DrawNewest(const PreviewGeometry &geometry, const IntRect &part, uint32_t *pixels) {
    const ImageBuffer &image = gProxies.HostProxyImage;
    const PixelStore &draft = gProxies.draft;
    const bool hidesAll = draft.pixels && draft.scale == geometry.zoom && HoldsRect(draft.bounds, part);
    DrawStore(hidesAll ? draft : gProxies.scaledProxy, image, !ShowsEffectsOnly(), geometry.zoom, part,
              pixels, kTileBitmapSide);
    if (!draft.pixels)
        return;
    if (!hidesAll)
        OverlayStore(draft, image, geometry.zoom, part, pixels, kTileBitmapSide);
    RegionRects fresh{};
    if (gProxies.draftHidesFresh || geometry.zoom != gProxies.previous.zoom ||
        !GetRegionRects(gProxies.FreshRegion, &fresh))
        return;
    for (uint32_t i = 0; i < fresh.count; ++i) {
        const RECT &r = fresh.rects[i];
        const IntRect exact = IntersectRects({r.left, r.top, r.right, r.bottom}, part);
        if (IsEmptyRect(exact))
            continue;
        OverlayStore(gProxies.scaledProxy, image, geometry.zoom, exact,
                     pixels + int64_t{exact.top - part.top} * kTileBitmapSide + (exact.left - part.left),
                     kTileBitmapSide);
    }
    FreeRegionRects(&fresh);
}

// Draws one piece, no larger than the tile bitmap; client pixels. Under the lock.
bool PaintPiece(PieceDrawer draw, HDC dc, const IntRect &piece, const PreviewGeometry &geometry) {
    const IntRect visible = VisibleRect(geometry);
    const int32_t dx = visible.left - geometry.display.left, dy = visible.top - geometry.display.top;
    if (!gProxies.tileBitmap.pixels)
        return false;
    // The transfer of the piece before may still be pending.
    GdiFlush();
    draw(geometry, {piece.left + dx, piece.top + dy, piece.right + dx, piece.bottom + dy},
         gProxies.tileBitmap.pixels);
    return DrawTileBitmap(gProxies.tileBitmap, dc, piece.left, piece.top, piece.right - piece.left,
                          piece.bottom - piece.top);
}

// The rectangle around all that one source may have drawn; the whole image when that is not known.
IntRect ChangedRect(const LightSource &source) {
    return gProxies.isStarBoxKnown ? StarRect(source, gProxies.starBox) : gProxies.HostProxyImage.bounds;
}

void InvalidateSource(const LightSource &source) {
    InvalidateEffect(IntersectRects(ChangedRect(source), gProxies.HostProxyImage.bounds));
}

// Changes sources one by one, so that it is seen which of them became another state.
int32_t ChangeInRect(const IntRect &rect, int32_t mode) {
    const LightSourceTableView table = GetLightSourceTable();
    const size_t bytes = std::max<size_t>(table.count * sizeof(uint32_t), 1);
    auto *states = static_cast<uint32_t *>(CountedAlloc(bytes));
    for (uint32_t i = 0; states && i < table.count; ++i)
        states[i] = table.records[i].State;
    const int32_t changed = SetLightSourceStatesInRect(rect, mode);
    if (!states && changed > 0)
        InvalidateEffect(gProxies.HostProxyImage.bounds);
    for (uint32_t i = 0; states && i < table.count; ++i)
        if (table.records[i].State != states[i])
            InvalidateSource(table.records[i]);
    CountedFree(states, bytes);
    return changed;
}

void RestoreState(uint8_t packed, bool isShown, LightSource *source) {
    const uint32_t before = source->State;
    UnpackLightState(packed, source);
    if (isShown && source->State != before)
        InvalidateSource(*source);
}

} // namespace

bool PaintImageWith(PieceDrawer draw, HDC dc, const IntRect &part, const PreviewGeometry &geometry) {
    const IntRect area = IntersectRects(IntersectRects(part, geometry.display), ImageInClient(geometry));
    if (!LockPreview())
        return false;
    bool isDrawn = true;
    for (int32_t top = area.top; top < area.bottom; top += kTileBitmapSide)
        for (int32_t left = area.left; left < area.right; left += kTileBitmapSide)
            isDrawn = PaintPiece(draw, dc,
                                 {left, top, std::min(left + kTileBitmapSide, area.right),
                                  std::min(top + kTileBitmapSide, area.bottom)},
                                 geometry) &&
                      isDrawn;
    UnlockPreview();
    return isDrawn;
}

bool PaintPreviewImage(HDC dc, const IntRect &part, const PreviewGeometry &geometry) {
    return PaintImageWith(DrawNewest, dc, part, geometry);
}

void SetFilterEffectsInvalidInRect(const IntRect &rect) {
    if (!LockPreview())
        return;
    const bool isActive = gProxies.hasPrevious && gProxies.previous.previewOn;
    if (isActive) {
        InvalidateEffect(IntersectRects(rect, gProxies.HostProxyImage.bounds));
        CheckPreview();
    }
    UnlockPreview();
    if (!isActive)
        ReportError({kSiteLayer, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "SetFilterEffectsInvalidInRect() called when Filter Effect Layer not active.");
}

int32_t ChangeEffectAt(int32_t x, int32_t y, double zoomPercent, int32_t mode) {
    if (!LockPreview())
        return SetLightSourceStateAt(x, y, zoomPercent, mode);
    const int32_t index = SetLightSourceStateAt(x, y, zoomPercent, mode);
    if (index >= 0)
        InvalidateSource(GetLightSourceTable().records[index]);
    CheckPreview();
    UnlockPreview();
    return index;
}

int32_t ChangeEffectsInRect(const IntRect &rect, int32_t mode) {
    if (!LockPreview())
        return SetLightSourceStatesInRect(rect, mode);
    const int32_t changed = ChangeInRect(rect, mode);
    CheckPreview();
    UnlockPreview();
    return changed;
}

void RestoreEffects(const uint8_t *states, uint32_t count) {
    const LightSourceTableView table = GetLightSourceTable();
    if (count != table.count)
        return;
    const bool isLocked = LockPreview();
    for (uint32_t i = 0; i < count; ++i)
        RestoreState(states[i], isLocked, &table.records[i]);
    if (!isLocked)
        return;
    CheckPreview();
    UnlockPreview();
}
