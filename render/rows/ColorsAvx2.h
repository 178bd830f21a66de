// A light source's colours, for processors with AVX2; to be called on no other.
#pragma once

#include "render/rows/RowLoops.h"

void MakeColorsAvx2(const ColorPiece &piece, BlendColor *colors);
