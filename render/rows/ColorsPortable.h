// A light source's colours, for any processor; the AVX2 form hands it what is left over at the end of a row.
#pragma once

#include "render/rows/RowLoops.h"

void MakeColorsPortable(const ColorPiece &piece, BlendColor *colors);
