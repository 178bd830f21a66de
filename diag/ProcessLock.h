// Keeps processes, and threads, apart that change the same files.
#pragma once

#include <cstdint>

constexpr uint32_t kProcessLockLimit = 2000; // milliseconds

// Waits until nobody else holds the folder's lock of this name. Null when that takes longer than the limit or
// the system refuses; otherwise to be given to ReleaseProcessLock, by the same thread.
void *TakeProcessLock(const char *name, const char *folder);
void ReleaseProcessLock(void *lock);
