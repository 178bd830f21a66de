// Pixels of a row of an arm or a flare, for any processor; the AVX2 form hands it what is left over at the
// end of a row.
#pragma once

#include "render/rows/RowLoops.h"

void FillArmPortable(const ArmPiece &piece, uint32_t *values, uint16_t *states);
void FillFlarePortable(const FlarePiece &piece, uint32_t *values);
