// Blending, for processors with AVX2; to be called on no other.
#pragma once

#include "render/rows/RowLoops.h"

void BlendAvx2Bytes(const BlendPiece &piece);
void BlendAvx2Words(const BlendPiece &piece);
void BlendAvx2Floats(const BlendPiece &piece);
