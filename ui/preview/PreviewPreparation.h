// Brings the window around the view, the regions and the scaled proxy in line with a request. Proxy Update
// Task only.
#pragma once

#include "ui/pixels/PreviewStore.h"
#include "ui/preview/PreviewRequest.h"

// When *cancel becomes non-zero the scaled proxy may still be the one before.
void PreparePreview(const PreviewRequest &request, const std::atomic<uint8_t> &cancel = kNeverCancelled);
