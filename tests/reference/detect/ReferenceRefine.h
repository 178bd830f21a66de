// Contrast test, radius refinement, colour and brightness of a candidate.
#pragma once

#include "tests/reference/detect/ReferenceDetect.h"

namespace reference {

bool PassesRingContrast(const Analysis &analysis, const Centre &centre, double radius);
// Moves the centre to a whole pixel and adapts centre and radius to the light; false when it does not come to
// rest.
bool Refine(const Analysis &analysis, Centre *centre, double *radius);

struct LightColor {
    uint32_t red, green, blue;
};
LightColor MeasureLight(const Analysis &analysis, const Centre &centre, double radius);

// The nearest whole pixel of a centre: a quarter of 2 or 3 adds one.
Centre NearestPixel(const Centre &centre);

} // namespace reference
