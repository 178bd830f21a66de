// The portable forms of the inner loops; the AVX2 forms hand them what is left over at the end of a row.
#pragma once

#include "render/rows/RenderPath.h"

#include <cstdint>

void FillArmPortable(const ArmPiece &piece, uint32_t *values, uint16_t *states);
void FillFlarePortable(const FlarePiece &piece, uint32_t *values);
void MakeColorsPortable(const ColorPiece &piece, BlendColor *colors);
void BlendPortableBytes(const BlendPiece &piece);
void BlendPortableWords(const BlendPiece &piece);
void BlendPortableFloats(const BlendPiece &piece);
