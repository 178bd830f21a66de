// Glow, for processors with AVX-512 (F, BW, DQ and VL); to be called on no other.
#pragma once

#include "render/rows/RowLoops.h"

void FillArmGlowAvx512(const GlowPiece &piece, float *const glow[3]);
void FillFlareGlowAvx512(const FlarePiece &piece, float *glow);
int32_t BlendGlowAvx512(const GlowBatch &batch, LeftPixel *left);
