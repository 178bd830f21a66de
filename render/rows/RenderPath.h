// The two forms of the inner loops, and which of them renders take.
#pragma once

#include "render/rows/RowLoops.h"

extern const RenderPath kPortablePath;
// Null where the processor lacks AVX2.
const RenderPath *Avx2Path();

// The path that renders take: the fastest one there is. Tests and benchmarks set another.
extern const RenderPath *gRenderPath;
