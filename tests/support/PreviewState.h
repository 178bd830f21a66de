// How far the preview's images are, for tests that wait for them.
#pragma once

#include "ui/preview/PreviewProxies.h"
#include "ui/preview/PreviewTiles.h"

// Whether the task has taken this request, nothing is missing any more and no draft is left.
inline bool IsPreviewFinished(const PreviewRequest &request) {
    if (!LockPreview())
        return false;
    const PreviewRequest &taken = gProxies.previous;
    const IntRect &a = taken.display, &b = request.display;
    const bool isTaken = gProxies.hasPrevious && gProxies.scaledProxy.pixels && !gProxies.draft.pixels &&
                         taken.zoom == request.zoom && taken.centerX == request.centerX &&
                         taken.centerY == request.centerY && a.left == b.left && a.top == b.top &&
                         a.right == b.right && a.bottom == b.bottom && taken.previewOn == request.previewOn &&
                         SameEffect(taken, request);
    UnlockPreview();
    PreviewTile tile{};
    return isTaken && !FindPreviewTile(request, PreviewArea::visible, &tile) &&
           !FindPreviewTile(request, PreviewArea::surroundings, &tile) &&
           !FindPreviewTile(request, PreviewArea::image, &tile);
}
