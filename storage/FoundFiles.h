// What a pattern finds, one by one.
#pragma once

#include "diag/WidePath.h"

#include <windows.h>

// False, with the system's error, when the search cannot begin; that nothing is found is one.
template <typename Take> bool TakeFoundFiles(const wchar_t *pattern, Take take) {
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(SystemPath(pattern).text, &found);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    do {
        take(found);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return true;
}
