#include "render/rows/ColorsPortable.h"

#include "engine/image/FixedPoint.h"
#include "render/rows/PixelBlender.h"

namespace {

uint32_t MulAs(bool precise, uint32_t nearOne, uint32_t small) {
    return precise ? MulPrecise(nearOne, small) : MulFast(nearOne, small);
}

} // namespace

void MakeColorsPortable(const ColorPiece &piece, BlendColor *colors) {
    for (uint32_t i = 0; i < piece.count; ++i) {
        uint32_t channel[3];
        for (int c = 0; c < 3; ++c)
            channel[c] = MulAs(piece.precise, piece.factors[i].factor[c], piece.tint[c]);
        BlendColor &color = colors[i];
        color.largest = LargestChannel(channel);
        for (int c = 0; c < 3; ++c)
            color.inverse[c] = kFractionOne - NormaliseChannel(channel[c], color.largest);
    }
}
