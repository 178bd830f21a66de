#include "engine/image/FixedPoint.h"

bool gPreciseMode = true;
uint32_t gFloor = kFloor8Bit;

void UsePreciseMode(int32_t bytesPerSample) {
    gPreciseMode = true;
    gFloor = FloorForBytesPerSample(bytesPerSample);
}

void UseFastMode() {
    gPreciseMode = false;
    gFloor = kFloorPreview;
}
