// Putting a text or a picture on the clipboard.
#pragma once

#include <cstddef>
#include <windows.h>

struct ClipboardPart {
    const void *data;
    size_t bytes;
};

// Replaces the clipboard's contents by one block made of the parts one after another, in the owner's name.
// `noun` says in a report what it is. False, reported, when it could not be done; nothing is left behind
// then.
bool CopyToClipboard(HWND owner, UINT format, const char *noun, const ClipboardPart *parts, int count);
