// What the dialog asks the Proxy Update Task for. The record is copied whole.
#pragma once

#include "render/ParameterSet.h"
#include "ui/pixels/PreviewGeometry.h"

#include <cstddef>
#include <cstdint>

struct PreviewRequest {
    uint32_t requestTime;                 // GetTickCount; filled when the request is handed over
    uint32_t tilesDone;                   // 0 in a new request; counted by the task
    IntRect display;                      // client area of the display less one pixel on every side
    IntRect image;                        // the whole image, scaled
    int32_t centerX, centerY;             // of the visible area, scaled
    double zoom;                          // percent
    uint8_t previewOn;                    // 0 shows the original
    uint16_t parameters[kParameterCount]; // by Parameter; the bits of signed 16-bit numbers
    uint32_t effectType;                  // four-character code
    uint32_t effectsOnly;                 // 0 or 1
};
static_assert(sizeof(PreviewRequest) == 88 && offsetof(PreviewRequest, display) == 8 &&
              offsetof(PreviewRequest, image) == 24 && offsetof(PreviewRequest, centerX) == 40 &&
              offsetof(PreviewRequest, zoom) == 48 && offsetof(PreviewRequest, previewOn) == 56 &&
              offsetof(PreviewRequest, parameters) == 58 && offsetof(PreviewRequest, effectType) == 80 &&
              offsetof(PreviewRequest, effectsOnly) == 84);

// The request for a view with these parameters.
PreviewRequest MakePreviewRequest(const PreviewGeometry &geometry, bool previewOn,
                                  const ParameterSet &parameters);
// The settings of the preview's renders: at full size, whatever the zoom.
RenderSettings SettingsOfRequest(const PreviewRequest &request);
// Whether two requests show the same effect.
bool SameEffect(const PreviewRequest &a, const PreviewRequest &b);
// Whether two requests ask for the same view of it.
bool SameView(const PreviewRequest &a, const PreviewRequest &b);
