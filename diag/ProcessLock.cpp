#include "diag/ProcessLock.h"

#include "diag/WidePath.h"

#include <cstdint>
#include <cwchar>
#include <cwctype>
#include <iterator>
#include <windows.h>

namespace {

// A folder of its own has a lock of its own: of another user, or of a test.
uint64_t HashFolder(const char *folder) {
    WidePath wide = {};
    WidenPath(folder, &wide);
    uint64_t hash = 14695981039346656037u; // FNV-1a
    for (const wchar_t *p = wide.text; *p; ++p)
        hash = (hash ^ static_cast<uint64_t>(towlower(static_cast<wint_t>(*p)))) * 1099511628211u;
    return hash;
}

} // namespace

void *TakeProcessLock(const char *name, const char *folder) {
    wchar_t fullName[100];
    swprintf(fullName, std::size(fullName), L"Global\\Brillatrix %hs %016llx", name, HashFolder(folder));
    // No more than waiting is asked for: a process with fewer rights than the one that made it gets that.
    const HANDLE mutex = CreateMutexExW(nullptr, fullName, 0, SYNCHRONIZE);
    if (!mutex)
        return nullptr;
    const DWORD waited = WaitForSingleObject(mutex, kProcessLockLimit);
    if (waited == WAIT_OBJECT_0 || waited == WAIT_ABANDONED)
        return mutex;
    CloseHandle(mutex);
    return nullptr;
}

void ReleaseProcessLock(void *lock) {
    if (!lock)
        return;
    ReleaseMutex(lock);
    CloseHandle(lock);
}
