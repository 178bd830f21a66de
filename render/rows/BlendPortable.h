// Blending, for any processor; the AVX2 form hands it what is left over at the end of a row.
#pragma once

#include "render/rows/RowLoops.h"

void BlendPortableBytes(const BlendPiece &piece);
void BlendPortableWords(const BlendPiece &piece);
void BlendPortableFloats(const BlendPiece &piece);
