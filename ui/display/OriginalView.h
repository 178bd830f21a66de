// The photograph without stars, for a comparison: drawn at once, whatever the Proxy Update Task is at, and
// without a request, so that the stars are there again at once too. Dialog's thread.
#pragma once

#include "ui/pixels/PreviewGeometry.h"

#include <windows.h>

// As PaintPreviewImage, but nothing that was rendered is shown.
bool PaintOriginalImage(HDC dc, const IntRect &part, const PreviewGeometry &geometry);
