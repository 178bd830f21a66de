// Drawing the filter's own samples into a window, which is how filters show a preview.
#pragma once

#include "host/services/HostServices.h"

namespace host {

HostResult ShowPixels(const PixelMap *map, const HostRect32 *source, int32_t row, int32_t column,
                      void *deviceContext);

} // namespace host
