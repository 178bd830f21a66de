// Writes a file whole or not at all.
#pragma once

#include <cstddef>

// Writes `size` bytes to a temporary file beside `path`, flushes it to the disk and puts it in the file's
// place; a file that somebody holds open is waited for, half a second at most. On any failure, reported, the
// old file stays as it was and the temporary file is removed. Any thread, any number of processes at a time.
bool WriteFileAtomically(const wchar_t *path, const void *data, size_t size);
bool WriteFileAtomically(const char *path, const void *data, size_t size);

// Deletes what a crash left in the folder more than a day ago.
void RemoveOldTemporaryFiles(const char *folder);
