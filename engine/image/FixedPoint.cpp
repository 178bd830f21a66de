#include "engine/image/FixedPoint.h"

bool gPreciseMode = true;
uint32_t gFloor = kFloor8Bit;
