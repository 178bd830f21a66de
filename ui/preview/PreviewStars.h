// How far the stars of the preview reach around their light sources.
#pragma once

#include "engine/image/Geometry.h"
#include "engine/table/LightSourceTable.h"

// Adds to a box, when it is known, all stamps that the last renders at full size have built, as offsets from
// a source's pixel; other renders may have dropped some since. Whether the box is known now. On the thread
// that renders.
bool AddStarBox(bool isKnown, IntRect *box);

// The document pixels that a source's star covers.
IntRect StarRect(const LightSource &source, const IntRect &box);

// Task: brings gProxies.lightSources up to date, as the dialog's thread may change states at any time. Under
// the lock. False without memory.
bool CopyLightSources();
