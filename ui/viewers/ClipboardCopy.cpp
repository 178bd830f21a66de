#include "ui/viewers/ClipboardCopy.h"

#include "diag/ErrorReport.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr uint32_t kSiteFill = 657, kSiteLock = 666, kSiteAllocate = 676;
constexpr uint32_t kSiteOpen = 683, kSiteEmpty = 690, kSiteInsert = 697;

void ReportWithSystemError(uint32_t site, const char *text) {
    ReportError({site, kSystemError, GetLastError()}, kStopIcon, kTitleUnexpected, "%s", text);
}

bool ReportClipboard(uint32_t site, const char *text) {
    ReportError({site, kDebugMessage, 0}, kStopIcon, kTitleUnexpected, "%s", text);
    return false;
}

// What the system gave must hold what was asked for.
bool FillBlock(HGLOBAL block, const char *noun, const ClipboardPart *parts, int count) {
    auto *bytes = static_cast<uint8_t *>(GlobalLock(block));
    if (!bytes) {
        ReportWithSystemError(kSiteLock, "Could not lock global buffer for Clipboard.");
        return false;
    }
    size_t room = GlobalSize(block);
    bool fits = true;
    for (int i = 0; fits && i < count; ++i) {
        fits = parts[i].bytes <= room;
        if (!fits)
            break;
        memcpy(bytes, parts[i].data, parts[i].bytes);
        bytes += parts[i].bytes;
        room -= parts[i].bytes;
    }
    if (!fits)
        ReportError({kSiteFill, kSystemError, GetLastError()}, kStopIcon, kTitleUnexpected,
                    "Could not copy Clipboard %s into global buffer.", noun);
    GlobalUnlock(block);
    return fits;
}

// Null, reported, without memory.
HGLOBAL MakeBlock(const char *noun, const ClipboardPart *parts, int count) {
    size_t size = 0;
    for (int i = 0; i < count; ++i)
        size += parts[i].bytes;
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
    if (!block) {
        ReportWithSystemError(kSiteAllocate, "Could not allocate global buffer for Clipboard.");
        return nullptr;
    }
    if (FillBlock(block, noun, parts, count))
        return block;
    GlobalFree(block);
    return nullptr;
}

bool ReplaceContents(UINT format, HGLOBAL block) {
    if (!EmptyClipboard())
        return ReportClipboard(kSiteEmpty, "Could not empty Clipboard.");
    if (!SetClipboardData(format, block))
        return ReportClipboard(kSiteInsert, "Could not insert selection into Clipboard.");
    return true;
}

bool PutOnClipboard(HWND owner, UINT format, HGLOBAL block) {
    if (!OpenClipboard(owner))
        return ReportClipboard(kSiteOpen, "Could not open Clipboard.");
    const bool put = ReplaceContents(format, block);
    CloseClipboard();
    return put;
}

} // namespace

bool CopyToClipboard(HWND owner, UINT format, const char *noun, const ClipboardPart *parts, int count) {
    const HGLOBAL block = MakeBlock(noun, parts, count);
    if (!block)
        return false;
    if (PutOnClipboard(owner, format, block)) // the block is the clipboard's now
        return true;
    GlobalFree(block);
    return false;
}
