#include "ui/pixels/DraftPictures.h"

#include "ui/pixels/PreviewFilling.h"
#include "ui/pixels/PreviewGeometry.h"

#include <algorithm>
#include <cmath>

namespace {

// Pixels of the display's own size for each that is drawn, along an axis, at best; and pixels at most.
constexpr double kMasterFactor = 3.0, kMasterPixels = 6e6;

bool SameRect(const IntRect &a, const IntRect &b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

double MasterScale(const IntRect &document, double zoom) {
    const double pixels = double(document.right - document.left) * (document.bottom - document.top);
    return std::clamp(std::min(zoom * kMasterFactor, kFullZoom * std::sqrt(kMasterPixels / pixels)),
                      kLeastDraftScale, kFullZoom);
}

void SplitStore(const PixelStore &store, ImageBuffer *planes) {
    const int64_t count = planes->planeSize;
    for (int32_t plane = 0; plane < planes->colorPlanes; ++plane) {
        const int shift = 16 - 8 * plane; // a grey pixel has its value in all three
        for (int64_t i = 0; i < count; ++i)
            planes->planes[plane][i] = static_cast<uint8_t>(store.pixels[i] >> shift);
    }
}

bool AllocatePlanes(bool isGray, const IntRect &bounds, ImageBuffer *planes) {
    return AllocateUnclearedImageBuffer(isGray ? kModeGray8 : kModeRgb8, 1, 0, bounds, false, planes,
                                        nullptr) == kNoError;
}

// The image reduced to `scale` percent of its own size.
bool ReducePlanes(const ImageBuffer &image, const IntRect &bounds, double scale,
                  const std::atomic<uint8_t> &stop, ImageBuffer *planes) {
    PixelStore store{};
    if (!AllocateStore(bounds, scale, &store))
        return false;
    const bool isMade =
        FillStore(image, stop, &store) && AllocatePlanes(image.colorPlanes == 1, bounds, planes);
    if (isMade)
        SplitStore(store, planes);
    FreeStore(&store);
    return isMade;
}

void FreePicture(DraftPictures *pictures) {
    FreeImageBuffer(&pictures->picture);
    FreeImageBuffer(&pictures->drawn);
    pictures->scale = 0.0;
}

} // namespace

void FreeDraftPictures(DraftPictures *pictures) {
    FreePicture(pictures);
    FreeImageBuffer(&pictures->master);
    *pictures = DraftPictures{};
}

bool NeedDraftMaster(const ImageBuffer &image, const IntRect &document, double zoom,
                     const std::atomic<uint8_t> &stop, DraftPictures *pictures) {
    const double scale = MasterScale(document, zoom);
    if (pictures->master.pixels && SameRect(pictures->document, document) && pictures->masterScale == scale)
        return true;
    FreeDraftPictures(pictures);
    const IntRect bounds = ScaleRect(document, scale);
    if (!ReducePlanes(image, bounds, scale, stop, &pictures->master))
        return false;
    pictures->document = document;
    pictures->masterScale = scale;
    return true;
}

const ImageBuffer *NeedDraftPicture(double scale, const std::atomic<uint8_t> &stop, DraftPictures *pictures) {
    const bool isMaster = scale >= pictures->masterScale;
    const double wanted = isMaster ? pictures->masterScale : scale;
    if (pictures->scale != wanted || !pictures->drawn.pixels) {
        FreePicture(pictures);
        const IntRect bounds = ScaleRect(pictures->document, wanted);
        if (!isMaster && !ReducePlanes(pictures->master, bounds, kFullZoom * wanted / pictures->masterScale,
                                       stop, &pictures->picture))
            return nullptr;
        if (!AllocatePlanes(pictures->master.colorPlanes == 1, bounds, &pictures->drawn))
            return nullptr;
        pictures->scale = wanted;
    }
    return isMaster ? &pictures->master : &pictures->picture;
}

bool FinishDraft(const ImageBuffer &drawn, double scale, const IntRect &document, double zoom,
                 const std::atomic<uint8_t> &stop, PixelStore *draft) {
    const double shown = std::min(zoom, scale);
    PixelStore store{};
    if (!AllocateStore(ScaleRect(document, shown), kFullZoom * shown / scale, &store))
        return false;
    if (!FillStore(drawn, stop, &store)) {
        FreeStore(&store);
        return false;
    }
    store.scale = shown;
    *draft = store;
    return true;
}
