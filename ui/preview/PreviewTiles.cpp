#include "ui/preview/PreviewTiles.h"

#include "engine/SystemThreads.h"
#include "render/RenderDriver.h"
#include "ui/pixels/PreviewFilling.h"
#include "ui/pixels/PreviewGeometry.h"
#include "ui/preview/PreviewInvariants.h"
#include "ui/preview/PreviewProxies.h"
#include "ui/preview/PreviewStars.h"

#include <algorithm>
#include <limits>

namespace {

constexpr RegionStep kSetTile{905, "Could not set rectangle into TempRegion."};
constexpr RegionStep kSetInvalid{906, "Could not set rectangle into InvalidWorkRegion."};
constexpr RegionStep kFindFresh{908, "Could not combine WorkRegion and TempRegion."};
constexpr RegionStep kFindEffect{911, "Could not combine WorkRegion and ValidEffectProxyRegion."};
constexpr RegionStep kFindHost{914, "Could not combine WorkRegion and ValidHostProxyRegion."};
constexpr RegionStep kFindInvalid{917, "Could not combine InvalidWorkRegion and TempRegion."};
constexpr RegionStep kAddEffect{920, "Could not combine TempRegion and ValidEffectProxyRegion."};
constexpr RegionStep kAddScaled{923, "Could not combine ValidScaledProxyRegion with TempRegion."};
constexpr RegionStep kAddFresh{926, "Could not combine FreshRegion with TempRegion."};

// A region in more pieces than this is rendered in one go, valid pixels included.
constexpr uint32_t kMostPieces = 8;
constexpr int32_t kProcessorsForDialog = 1;

// What of a tile is to be done.
struct TileWork {
    IntRect scaled;       // part of the scaled proxy to make; empty when none
    IntRect document;     // the image under it, or the effect to render
    RegionRects missing;  // document: effects to render; FreeRegionRects
    uint32_t changesSeen; // gProxies.effectChanges when the work began
};

// Fills WorkRegion with the part of `area` that lies outside `valid`. False when nothing does.
bool FindMissing(const IntRect &area, HRGN valid, const RegionStep &step) {
    return SetRegionRect(gProxies.TempRegion, area, kSetTile) &&
           CombineRegions(gProxies.WorkRegion, gProxies.TempRegion, valid, RGN_DIFF, step) &&
           IsRegionFilled(gProxies.WorkRegion);
}

// The pixel of WorkRegion nearest to a point.
bool NearestMissing(const ScaledPoint &from, ScaledPoint *nearest) {
    RegionRects rects{};
    if (!GetRegionRects(gProxies.WorkRegion, &rects))
        return false;
    int64_t least = std::numeric_limits<int64_t>::max();
    for (uint32_t i = 0; i < rects.count; ++i) {
        const RECT &r = rects.rects[i];
        const ScaledPoint point{std::clamp<int32_t>(from.x, r.left, r.right - 1),
                                std::clamp<int32_t>(from.y, r.top, r.bottom - 1)};
        const int64_t dx = int64_t{point.x} - from.x, dy = int64_t{point.y} - from.y;
        if (dx * dx + dy * dy >= least)
            continue;
        least = dx * dx + dy * dy;
        *nearest = point;
    }
    const bool isFound = rects.count > 0;
    FreeRegionRects(&rects);
    return isFound;
}

bool FindTileIn(const IntRect &area, int32_t side, HRGN valid, const RegionStep &step,
                const ScaledPoint &from, IntRect *tile) {
    ScaledPoint nearest{};
    if (IsEmptyRect(area) || !FindMissing(area, valid, step) || !NearestMissing(from, &nearest))
        return false;
    *tile = TileAt(area, side, nearest.x, nearest.y);
    return true;
}

ScaledPoint DocumentPoint(const ScaledPoint &scaled, double zoom) {
    return {static_cast<int32_t>(scaled.x * kFullZoom / zoom),
            static_cast<int32_t>(scaled.y * kFullZoom / zoom)};
}

ScaledPoint MiddleOf(const PreviewRequest &request) {
    return {request.centerX, request.centerY};
}

bool FindTileLocked(const PreviewRequest &request, PreviewArea area, const ScaledPoint &from, IntRect *tile) {
    const IntRect visible = VisibleImage(request);
    const int32_t side = PreviewTileSize(request.zoom, visible);
    switch (area) {
    case PreviewArea::visible:
        return gProxies.scaledProxy.pixels &&
               FindTileIn(visible, side, gProxies.FreshRegion, kFindFresh, from, tile);
    case PreviewArea::surroundings: // which may be large around a sliver that is seen
        return gProxies.scaledProxy.pixels && FindTileIn(gProxies.window, std::max(side, kSmallestTile),
                                                         gProxies.FreshRegion, kFindFresh, from, tile);
    default:
        return request.previewOn && FindTileIn(gProxies.HostProxyImage.bounds, PreviewTileSize(kFullZoom, {}),
                                               gProxies.ValidEffectProxyRegion, kFindEffect,
                                               DocumentPoint(from, request.zoom), tile);
    }
}

// Takes a rectangle, with whatever is valid in it, to be rendered anew.
void MergePieces(TileWork *work) {
    const IntRect box = RegionBox(gProxies.InvalidWorkRegion);
    InvalidateEffect(box);
    gProxies.lightSourcesOf = gProxies.effectChanges; // no source has changed
    SetRegionRect(gProxies.InvalidWorkRegion, box, kSetInvalid);
    FreeRegionRects(&work->missing);
    GetRegionRects(gProxies.InvalidWorkRegion, &work->missing);
}

// Into InvalidWorkRegion and work->missing: where the effect of work->document is not valid, as far as there
// are host pixels.
bool FindMissingEffect(TileWork *work) {
    const HRGN invalid = gProxies.InvalidWorkRegion;
    if (!SetRegionRect(gProxies.TempRegion, work->document, kSetTile) ||
        !CombineRegions(gProxies.WorkRegion, gProxies.TempRegion, gProxies.ValidHostProxyRegion, RGN_AND,
                        kFindHost) ||
        !CombineRegions(gProxies.WorkRegion, gProxies.WorkRegion, gProxies.ValidEffectProxyRegion, RGN_DIFF,
                        kFindEffect) ||
        !CombineRegions(invalid, gProxies.WorkRegion, gProxies.TempRegion, RGN_AND, kFindInvalid) ||
        !GetRegionRects(invalid, &work->missing))
        return false;
    if (work->missing.count > kMostPieces)
        MergePieces(work);
    return true;
}

bool BeginWorkLocked(const PreviewRequest &request, PreviewTile tile, TileWork *work) {
    if (tile.area != PreviewArea::image) {
        FindMissing(tile.rect, gProxies.FreshRegion, kFindFresh);
        tile.rect = work->scaled = RegionBox(gProxies.WorkRegion);
    }
    work->document = DocumentOfTile(request, tile);
    const bool isFound = !request.previewOn || (CopyLightSources() && FindMissingEffect(work));
    work->changesSeen = gProxies.effectChanges;
    return isFound;
}

TileResult RenderMissing(const PreviewRequest &request, const TileWork &work,
                         const std::atomic<uint8_t> &cancel) {
    const RenderSettings settings = SettingsOfRequest(request);
    for (uint32_t i = 0; i < work.missing.count; ++i) {
        const RECT &piece = work.missing.rects[i];
        if (!RenderEffect(settings, gProxies.HostProxyImage,
                          {piece.left, piece.top, piece.right, piece.bottom}, gProxies.lightSources, cancel,
                          &gProxies.EffectProxyImage, RenderThreads(kProcessorsForDialog)))
            return cancel ? TileResult::cancelled : TileResult::failed;
    }
    return TileResult::rendered;
}

// The piece of the scaled proxy that the work is for. Made without the lock, as it takes its time.
TileResult MakePiece(const PreviewRequest &request, const TileWork &work, const PreviewCancelFlags &flags,
                     PixelStore *piece) {
    const std::atomic<uint8_t> &cancel = request.zoom < kFullZoom ? flags.reduction : flags.conversion;
    if (!AllocateStore(StoreBounds(work.scaled, request.zoom), StoreScale(request.zoom), piece))
        return TileResult::failed;
    const ImageBuffer &layer = request.previewOn ? gProxies.EffectProxyImage : gProxies.HostProxyImage;
    if (FillStore(layer, cancel, piece)) {
        MatchColors(gProxies.tileBitmap, piece);
        return TileResult::rendered;
    }
    return cancel ? TileResult::cancelled : TileResult::failed;
}

void AddRect(HRGN region, const IntRect &rect, const RegionStep &step) {
    if (SetRegionRect(gProxies.TempRegion, rect, kSetTile))
        CombineRegions(region, region, gProxies.TempRegion, RGN_OR, step);
}

// Makes what is done valid, unless the dialog's thread has changed a light source meanwhile: then it is done
// again. The effect goes first: it serves also a view for which the piece comes too late.
template <typename Finish> void FinishLocked(const TileWork &work, Finish finish) {
    if (!LockPreview())
        return;
    if (work.changesSeen == gProxies.effectChanges) {
        finish();
        CheckPreview();
    }
    UnlockPreview();
}

void FinishEffect(const TileWork &work) {
    FinishLocked(work, [] {
        CombineRegions(gProxies.ValidEffectProxyRegion, gProxies.ValidEffectProxyRegion,
                       gProxies.InvalidWorkRegion, RGN_OR, kAddEffect);
        gProxies.isStarBoxKnown = AddStarBox(gProxies.isStarBoxKnown, &gProxies.starBox);
    });
}

void FinishPiece(const PreviewRequest &request, const TileWork &work, const PixelStore &piece) {
    FinishLocked(work, [&] {
        CopyStore(piece, &gProxies.scaledProxy);
        AddRect(gProxies.ValidScaledProxyRegion, request.zoom < kFullZoom ? work.document : work.scaled,
                kAddScaled);
        AddRect(gProxies.FreshRegion, work.scaled, kAddFresh);
    });
}

} // namespace

IntRect VisibleImage(const PreviewRequest &request) {
    const PreviewGeometry geometry = GeometryOfRequest(request);
    return IntersectRects(VisibleRect(geometry), ScaledImage(geometry));
}

IntRect VisibleDocument(const PreviewRequest &request) {
    const IntRect visible = VisibleImage(request);
    return IsEmptyRect(visible)
               ? visible
               : IntersectRects(UnscaleRect(visible, request.zoom), gProxies.HostProxyImage.bounds);
}

IntRect DocumentOfTile(const PreviewRequest &request, const PreviewTile &tile) {
    if (tile.area == PreviewArea::image)
        return tile.rect;
    return IntersectRects(UnscaleRect(tile.rect, request.zoom), gProxies.HostProxyImage.bounds);
}

double MissingEffect(const PreviewRequest &request) {
    double pixels = 0.0;
    RegionRects rects{};
    if (!request.previewOn || !LockPreview())
        return 0.0;
    if (FindMissing(VisibleDocument(request), gProxies.ValidEffectProxyRegion, kFindEffect) &&
        GetRegionRects(gProxies.WorkRegion, &rects)) {
        for (uint32_t i = 0; i < rects.count; ++i)
            pixels += double(rects.rects[i].right - rects.rects[i].left) *
                      (rects.rects[i].bottom - rects.rects[i].top);
        FreeRegionRects(&rects);
    }
    UnlockPreview();
    return pixels;
}

bool FindPreviewTile(const PreviewRequest &request, PreviewArea area, PreviewTile *tile,
                     const ScaledPoint *from) {
    IntRect rect{};
    if (!LockPreview())
        return false;
    const bool isFound = FindTileLocked(request, area, from ? *from : MiddleOf(request), &rect);
    UnlockPreview();
    if (isFound)
        *tile = {rect, area};
    return isFound;
}

TileResult RenderPreviewTile(const PreviewRequest &request, const PreviewTile &tile,
                             const PreviewCancelFlags &cancel) {
    TileWork work{};
    PixelStore piece{};
    if (request.previewOn && !EnsureEffectImage())
        return TileResult::failed;
    if (!LockPreview())
        return TileResult::failed;
    TileResult result = BeginWorkLocked(request, tile, &work) ? TileResult::rendered : TileResult::failed;
    UnlockPreview();
    if (result == TileResult::rendered && work.missing.count > 0) {
        result = RenderMissing(request, work, cancel.stars);
        if (result == TileResult::rendered)
            FinishEffect(work);
    }
    if (result == TileResult::rendered && !IsEmptyRect(work.scaled)) {
        result = MakePiece(request, work, cancel, &piece);
        if (result == TileResult::rendered)
            FinishPiece(request, work, piece);
    }
    FreeStore(&piece);
    FreeRegionRects(&work.missing);
    return result;
}
