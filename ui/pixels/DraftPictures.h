// The pictures that a draft of the preview is drawn from: the view's part of the image, reduced, with 8 bits
// a sample. Portable.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "ui/pixels/PreviewStore.h"

#include <atomic>

// Percent; the renderer draws at none smaller.
constexpr double kLeastDraftScale = 1.0;

// Both stay while the view does; each is made when it is first needed. Owner of the buffers: the record.
struct DraftPictures {
    IntRect document;   // the part of the image
    double masterScale; // percent of the image; the largest that a draft is drawn at
    ImageBuffer master;
    double scale;        // of `picture`
    ImageBuffer picture; // what stars are drawn onto copies of; empty when it is the master itself
    ImageBuffer drawn;   // the copy; of the same form and bounds
};

void FreeDraftPictures(DraftPictures *pictures);

// Makes the master for a part of the image at `zoom`, unless it is there. False when stopped or without
// memory.
bool NeedDraftMaster(const ImageBuffer &image, const IntRect &document, double zoom,
                     const std::atomic<uint8_t> &stop, DraftPictures *pictures);

// The master reduced to `scale`, at most its own; null when stopped or without memory. `drawn` then has its
// form.
const ImageBuffer *NeedDraftPicture(double scale, const std::atomic<uint8_t> &stop, DraftPictures *pictures);

// What was drawn at `scale`, averaged down to the display's `zoom`; larger zooms are left to the drawing.
bool FinishDraft(const ImageBuffer &drawn, double scale, const IntRect &document, double zoom,
                 const std::atomic<uint8_t> &stop, PixelStore *draft);
