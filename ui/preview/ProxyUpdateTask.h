// The Proxy Update Task: the one background thread that keeps the preview up to date. Everything here is
// called on the dialog's thread.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "ui/pixels/PreviewGeometry.h"
#include "ui/preview/PreviewRequest.h"

#include <atomic>
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

// Hands a request over (its time and tile count are filled in here) and cancels the one in work. Never waits
// for a render.
void RequestPreview(const PreviewRequest &request);

// Call it when the display is destroyed. Ends the task, whatever it is doing, and gives everything back.
void StopProxyUpdateTask();

// The request for a view; the parameters are in the order of PreviewRequest::parameters.
PreviewRequest MakePreviewRequest(const PreviewGeometry &geometry, bool previewOn,
                                  const int16_t (&parameters)[kRequestParameters], uint32_t effectType,
                                  bool effectsOnly);

// State of the view tools that the task resets when the light source table is complete.
extern std::atomic<uint8_t> gViewToolInUse;
constexpr uint32_t kNoLightSource = 65535;
extern std::atomic<uint32_t> gLastHiddenLightSource; // index into the table
