// The AVX2 forms of the inner loops. They may be called only where the processor has AVX2.
#pragma once

#include "render/rows/RenderPath.h"

#include <cstdint>

void FillArmAvx2(const ArmPiece &piece, uint32_t *values, uint16_t *states);
void FillFlareAvx2(const FlarePiece &piece, uint32_t *values);
void MakeColorsAvx2(const ColorPiece &piece, BlendColor *colors);
void BlendAvx2Bytes(const BlendPiece &piece);
void BlendAvx2Words(const BlendPiece &piece);
void BlendAvx2Floats(const BlendPiece &piece);
