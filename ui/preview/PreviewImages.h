// What the display and the view tools do with the preview's images. Called on the dialog's thread, at any
// time: without a running Proxy Update Task there are no images, and the calls do nothing.
#pragma once

#include "ui/pixels/PreviewGeometry.h"

#include <cstdint>
#include <windows.h>

// Draws the image's pixels inside `part` (client pixels, cut to the display here) and nothing beside the
// image: what lies around it is for the display to fill. Shows the newest pixels that exist for each place:
// rendered ones (of the last request as far as it is done, before that of the ones before, also of other
// zooms), or else the original's. Bounded work: never waits for a render. False when nothing could be drawn.
bool PaintPreviewImage(HDC dc, const IntRect &part, const PreviewGeometry &geometry);

// The same with pixels of one's own: `draw` gets the piece in scaled pixels and rows of kTileBitmapSide,
// under the preview's lock.
using PieceDrawer = void (*)(const PreviewGeometry &geometry, const IntRect &part, uint32_t *pixels);
bool PaintImageWith(PieceDrawer draw, HDC dc, const IntRect &part, const PreviewGeometry &geometry);

// Takes the effects in a rectangle (document pixels) out of what is valid; the next request renders them
// anew. Only while the last request showed the effect (previewOn); otherwise it is reported and nothing
// happens.
void SetFilterEffectsInvalidInRect(const IntRect &rect);

// The Hide Effects operations, with the preview's side: SetLightSourceStateAt and SetLightSourceStatesInRect
// of engine/table/LightSourceTable.h, made so that no render sees half a change, and what the stars of the
// changed sources cover becomes invalid. The caller then asks for a preview. Use these instead of the
// engine's while the task runs. Results as the engine's.
int32_t ChangeEffectAt(int32_t x, int32_t y, double zoomPercent, int32_t mode);
int32_t ChangeEffectsInRect(const IntRect &rect, int32_t mode);
// The same for states that all sources had before, packed; nothing when the table has another count.
void RestoreEffects(const uint8_t *states, uint32_t count);
