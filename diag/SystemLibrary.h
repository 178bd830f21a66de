// Libraries of the system that are loaded only when they are needed.
#pragma once

// By its full path: a library of that name in the host's folder is none of ours. An HMODULE; null, with the
// system's error set, when there is none.
void *LoadSystemLibrary(const wchar_t *name);
