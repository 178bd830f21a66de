// The preview's images, their regions and the lock that guards them. For the Proxy Update Task and the
// preview's own calls; the display and the tools use PreviewImages.h.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "engine/table/LightSourceTable.h"
#include "ui/pixels/DraftPictures.h"
#include "ui/pixels/PreviewGeometry.h"
#include "ui/pixels/PreviewStore.h"
#include "ui/pixels/PreviewTileBitmap.h"
#include "ui/preview/PreviewRequest.h"
#include "ui/preview/Regions.h"

#include <windows.h>

// Everything is under the lock, except as noted. "Task only" means that no other thread touches it while the
// task runs.
struct PreviewProxies {
    // The filter's own copy of the host's pixels: nothing is read twice. Constant while the task runs.
    ImageBuffer HostProxyImage;
    ImageBuffer EffectProxyImage; // of the same form; its pixels are the task's only
    PixelStore scaledProxy;       // written by the task under the lock, so the task reads it without

    PixelStore draft;     // over it; none while the exact view is whole
    bool draftHidesFresh; // else the fresh pixels are over the draft

    PixelStore original; // the view without stars, as it was compared last; dialog's thread

    HRGN ValidHostProxyRegion;    // document
    HRGN ValidEffectProxyRegion;  // document; part of the one above
    HRGN ScaledProxyRegion;       // rendered: the window that the scaled proxy is kept for
    HRGN ValidScaledProxyRegion;  // rendered; in the window, and in what is valid of the layer shown
    HRGN FreshRegion;             // scaled: pixels of the scaled proxy that show the valid ones above
    HRGN WorkRegion;              // what of a tile is still to be done; task only
    HRGN InvalidWorkRegion;       // the part of it whose effect must be rendered, document; task only
    HRGN InvalidateDisplayRegion; // client pixels to repaint at the next flush; task only
    HRGN TempRegion;              // scratch of whoever holds the lock

    TileBitmap tileBitmap;

    bool hasPrevious;
    PreviewRequest previous; // the last request that the images were prepared for
    bool hasEffect;
    PreviewRequest effectOf; // the request whose effect EffectProxyImage holds
    double renderingZoom;    // of `previous`
    PreviewRequest windowOf; // the request that the window was made for
    IntRect window;          // scaled

    // Counts what was taken out of the valid effect by another thread, so that a render under way is dropped.
    uint32_t effectChanges;
    IntRect starBox; // around a source's pixel: where the stars and flares of `effectOf` reach
    bool isStarBoxKnown;

    LightSourceTableView lightSources; // a copy of the table; task only
    size_t lightSourceBytes;
    uint32_t lightSourcesOf; // effectChanges when the copy was made
    bool hasLightSources;

    DraftPictures draftPictures; // task only
    int32_t draftQuality;        // task only; see PreviewDraft.h

    HANDLE mutex; // the lock
};

extern PreviewProxies gProxies;

// False, with nothing locked, when there is no lock: then the images must not be touched.
bool LockPreview();
void UnlockPreview();

// Host's thread, before the task starts: takes a copy of the description of `host`, with the regions that say
// what is valid at full size. False, with nothing left behind, for an empty image or without those regions.
bool PreparePreviewImages(const ImageBuffer &host);
// Next, likewise: the lock and the other regions. What could not be made is reported and stays null.
void CreatePreviewProxies();
// Host's thread, when no task runs; in this order. Does no harm when there is nothing.
void DeletePreviewRegions();
void FreePreviewImages();

// Task: makes EffectProxyImage when there is none. False without memory, reported.
bool EnsureEffectImage();

// The view of a request on the image.
PreviewGeometry GeometryOfRequest(const PreviewRequest &request);

// Then the photograph is nowhere to be seen, not even where nothing has been rendered yet. Under the lock.
bool ShowsEffectsOnly();

// Takes a document rectangle out of the valid effect and of all that is made from it. Under the lock.
void InvalidateEffect(const IntRect &rect);
