// How far the stars of the preview reach around their light sources.
#pragma once

#include "engine/image/Geometry.h"
#include "engine/table/LightSourceTable.h"

// The union of all stamps that the last renders have built, as offsets from a source's pixel, at full size.
// False, with *box unchanged, when there is none. On the thread that renders.
bool FindStarBox(IntRect *box);

// The document pixels that a source's star covers.
IntRect StarRect(const LightSource &source, const IntRect &box);
