// The forms of the inner loops, and which of them renders take.
#pragma once

#include "render/rows/RowLoops.h"

extern const RenderPath kPortablePath;
// Null where the processor lacks AVX2, or AVX-512.
const RenderPath *Avx2Path();
const RenderPath *Avx512Path();

// The path that renders take: the fastest one there is. Tests and benchmarks set another.
extern const RenderPath *gRenderPath;
