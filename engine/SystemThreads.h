// The system's threads, lent to the renderer.
#pragma once

#include "engine/image/WorkerThreads.h"

// One thread for each processor, less `spared`; at least the calling one.
WorkerThreads RenderThreads(int32_t spared);
