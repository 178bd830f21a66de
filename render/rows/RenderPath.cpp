#include "render/rows/RenderPath.h"

#include "diag/Compiler.h"
#include "render/rows/BlendAvx2.h"
#include "render/rows/BlendPortable.h"
#include "render/rows/ColorsAvx2.h"
#include "render/rows/ColorsPortable.h"
#include "render/rows/RowsAvx2.h"
#include "render/rows/RowsPortable.h"

const RenderPath kPortablePath = {"portable",
                                  FillArmPortable,
                                  FillFlarePortable,
                                  MakeColorsPortable,
                                  {BlendPortableBytes, BlendPortableWords, BlendPortableFloats}};

namespace {

constexpr RenderPath kAvx2Path = {
    "AVX2", FillArmAvx2, FillFlareAvx2, MakeColorsAvx2, {BlendAvx2Bytes, BlendAvx2Words, BlendAvx2Floats}};

const RenderPath *ChoosePath() {
    const RenderPath *avx2 = Avx2Path();
    return avx2 ? avx2 : &kPortablePath;
}

} // namespace

const RenderPath *Avx2Path() {
    return BX_PROCESSOR_HAS_AVX2 ? &kAvx2Path : nullptr;
}

const RenderPath *gRenderPath = ChoosePath();
