// Checks what must hold of the preview's images after every step.
#pragma once

#include <atomic>
#include <cstdint>

// Whether the checks run; on in debug builds from the start.
extern std::atomic<bool> gCheckPreview;
// Checks made, and how many found something wrong.
extern std::atomic<uint32_t> gPreviewChecks, gPreviewFaults;

// Under the lock. Reports and counts every rule that does not hold. Nothing while the checks are off.
void CheckPreview();
