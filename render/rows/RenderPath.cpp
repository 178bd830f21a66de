#include "render/rows/RenderPath.h"

#include "diag/Compiler.h"
#include "render/rows/BlendAvx2.h"
#include "render/rows/BlendPortable.h"
#include "render/rows/ColorsAvx2.h"
#include "render/rows/ColorsPortable.h"
#include "render/rows/GlowAvx2.h"
#include "render/rows/GlowAvx512.h"
#include "render/rows/RowsAvx2.h"
#include "render/rows/RowsPortable.h"

const RenderPath kPortablePath = {"portable",
                                  FillArmPortable,
                                  FillFlarePortable,
                                  MakeColorsPortable,
                                  {BlendPortableBytes, BlendPortableWords, BlendPortableFloats},
                                  nullptr,
                                  nullptr,
                                  nullptr};

namespace {

constexpr RenderPath kAvx2Path = {"AVX2",
                                  FillArmAvx2,
                                  FillFlareAvx2,
                                  MakeColorsAvx2,
                                  {BlendAvx2Bytes, BlendAvx2Words, BlendAvx2Floats},
                                  FillArmGlowAvx2,
                                  FillFlareGlowAvx2,
                                  BlendGlowAvx2};

// Only the glow gains by it.
constexpr RenderPath kAvx512Path = {"AVX-512",
                                    FillArmAvx2,
                                    FillFlareAvx2,
                                    MakeColorsAvx2,
                                    {BlendAvx2Bytes, BlendAvx2Words, BlendAvx2Floats},
                                    FillArmGlowAvx512,
                                    FillFlareGlowAvx512,
                                    BlendGlowAvx512};

const RenderPath *ChoosePath() {
    const RenderPath *paths[] = {Avx512Path(), Avx2Path()};
    for (const RenderPath *path : paths)
        if (path)
            return path;
    return &kPortablePath;
}

} // namespace

const RenderPath *Avx2Path() {
    return BX_PROCESSOR_HAS_AVX2 ? &kAvx2Path : nullptr;
}

const RenderPath *Avx512Path() {
    return BX_PROCESSOR_HAS_AVX512 ? &kAvx512Path : nullptr;
}

const RenderPath *gRenderPath = ChoosePath();
