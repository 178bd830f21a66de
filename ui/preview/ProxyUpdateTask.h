// The Proxy Update Task: the one background thread that keeps the preview up to date. Everything here is
// called on the dialog's thread.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "ui/preview/PreviewRequest.h"

#include <cstdint>
#include <windows.h>

// What the preview is made from. `image` must stay until StopProxyUpdateTask returns; the profile is copied.
struct PreviewSource {
    const ImageBuffer *image; // the filter's copy of the host's image
    const void *iccProfile;   // of the image, or null
    uint32_t iccProfileBytes;
    HWND dialog; // gets kMsgProgress and kMsgTableReady
};

// Call it when the display is created, after StartLightSourceTableInit. True when the task runs; on false
// nothing is left behind and the calls below do nothing. A task that still runs is stopped first.
bool StartProxyUpdateTask(HWND display, const PreviewSource &source);

// Hands a request over (its time and tile count are filled in here) and cancels of the one in work what it
// makes useless. Never waits for a render.
void RequestPreview(const PreviewRequest &request);

// A request is not served yet, or is being served.
bool IsPreviewInWork();

// Call it when the display is destroyed. Ends the task, whatever it is doing, and gives everything back.
void StopProxyUpdateTask();
