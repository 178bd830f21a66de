// Pixels of a row of an arm or a flare, for processors with AVX2; to be called on no other.
#pragma once

#include "render/rows/RowLoops.h"

void FillArmAvx2(const ArmPiece &piece, uint32_t *values, uint16_t *states);
void FillFlareAvx2(const FlarePiece &piece, uint32_t *values);
