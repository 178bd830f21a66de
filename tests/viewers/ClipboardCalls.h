// Makes a call of the copying fail, and counts the blocks that are neither freed nor the clipboard's.
#pragma once

// "GlobalAlloc", "GlobalLock", "GlobalSize" (answers too little), "OpenClipboard", "EmptyClipboard" or
// "SetClipboardData": every call of it fails until it is told null.
void FailClipboardCall(const char *name);
int LiveGlobalBlocks();
// OpenClipboard calls that succeeded and were not closed.
int ClipboardsOpen();
