// Glow, for processors with AVX2 and FMA; to be called on no other.
#pragma once

#include "render/rows/RowLoops.h"

void FillArmGlowAvx2(const GlowPiece &piece, float *const glow[3]);
void FillFlareGlowAvx2(const FlarePiece &piece, float *glow);
int32_t BlendGlowAvx2(const GlowBatch &batch, LeftPixel *left);
