// The lights of a run as files for other programs.
#pragma once

#include "host/base/ByteStream.h"
#include "plugin/interface/DiagnosticInterface.h"

#include <string>
#include <vector>

namespace host {

// A heading and one line a light, brightest first; decimal points whatever the system's language says:
//     rank       0 is the brightest
//     x, y       centre in pixels of the photo, in quarters; 0, 0 is the middle of the first pixel
//     diameter   in pixels
//     brightness, red, green, blue   0 to 1
//     state      hidden, normal or always
//     star       yes when the run's threshold and the state gave the light a star, else no
Bytes LightsAsCsv(const std::vector<DiagnosticLight> &lights);

// A drawing of the photo's size, transparent, to be laid over it: a ring of each light's size and colour with
// its rank; hidden ones dashed, those without a star grey. Each ring carries its numbers as a title.
Bytes LightsAsSvg(const std::vector<DiagnosticLight> &lights, int32_t width, int32_t height);

} // namespace host
