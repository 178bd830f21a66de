#include "diag/SystemLibrary.h"

#include "diag/WidePath.h"

#include <windows.h>

void *LoadSystemLibrary(const wchar_t *name) {
    wchar_t folder[MAX_PATH];
    WidePath path;
    const UINT length = GetSystemDirectoryW(folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH || !JoinPath(folder, name, &path))
        return nullptr;
    return LoadLibraryW(path.text);
}
