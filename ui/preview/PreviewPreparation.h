// Brings the window around the view, the regions and the scaled proxy in line with a request. Proxy Update
// Task only.
#pragma once

#include "ui/preview/PreviewRequest.h"

void PreparePreview(const PreviewRequest &request);
