// Functions that not every version of the system has.
#pragma once

#include <cstring>
#include <windows.h>

// Null when the library is not loaded or has no such function.
template <typename Function> Function SystemFunction(HMODULE library, const char *name) {
    const FARPROC address = library ? GetProcAddress(library, name) : nullptr;
    Function function = nullptr;
    static_assert(sizeof function == sizeof address);
    memcpy(&function, &address, sizeof function);
    return function;
}
