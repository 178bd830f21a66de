// Finds what of the preview is still missing, and renders it tile by tile. Proxy Update Task only.
#pragma once

#include "engine/image/Geometry.h"
#include "ui/preview/PreviewRequest.h"

#include <atomic>
#include <cstdint>

// Where tiles are looked for, in this order.
enum class PreviewArea {
    visible,      // what the display shows
    surroundings, // the window that the scaled proxy is kept for
    image,        // all of it: only the effect is rendered, so that panning there need not wait
};

struct PreviewTile {
    IntRect rect; // scaled; document pixels in the area `image`
    PreviewArea area;
};

struct ScaledPoint {
    int32_t x, y;
};

// The tile of an area that needs work and lies nearest to a point; of null to the middle of the view. False
// when none does.
bool FindPreviewTile(const PreviewRequest &request, PreviewArea area, PreviewTile *tile,
                     const ScaledPoint *from = nullptr);

enum class TileResult { rendered, cancelled, failed };

// One flag for each long loop: set to 1, the loop ends at its next light source or row.
struct PreviewCancelFlags {
    std::atomic<uint8_t> task, stars, reduction, conversion;
};

// Renders what the tile needs into the effect image and the scaled proxy. What had not been finished when a
// flag was raised stays invalid.
TileResult RenderPreviewTile(const PreviewRequest &request, const PreviewTile &tile,
                             const PreviewCancelFlags &cancel);

// The part of the image that a tile shows.
IntRect DocumentOfTile(const PreviewRequest &request, const PreviewTile &tile);
// The visible part of the image, scaled and document; empty when the image lies outside the display.
IntRect VisibleImage(const PreviewRequest &request);
IntRect VisibleDocument(const PreviewRequest &request);
// Document pixels of it whose effect is still to be rendered.
double MissingEffect(const PreviewRequest &request);
