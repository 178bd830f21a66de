// What the tasks need of the system, by the standard library, under the system's own names: builds without
// Windows find this in its place, so that the tasks as they are run under the sanitizers. Each object has a
// lock of its own, so that it orders no more than the system's would.
#pragma once

#include <cstddef>
#include <cstdint>

using BOOL = int;
using DWORD = uint32_t;
using UINT = unsigned;
using LONG = int32_t;
using WPARAM = uintptr_t;
using LPARAM = intptr_t;
using HANDLE = void *;
using HWND = void *;
using HDC = void *;
using HBITMAP = void *;
using HGDIOBJ = void *;
using HRGN = struct NativeRegion *;
#define __stdcall
constexpr BOOL TRUE = 1, FALSE = 0;
constexpr DWORD INFINITE = 0xFFFFFFFF;
constexpr UINT WM_APP = 0x8000;

struct POINT {
    LONG x, y;
};
struct RECT {
    LONG left, top, right, bottom;
};
struct BITMAPV5HEADER {
    uint8_t bytes[124];
};

// Events, mutexes and threads. A handle is closed when nobody waits for it.
constexpr DWORD WAIT_OBJECT_0 = 0, WAIT_ABANDONED_0 = 0x80, WAIT_TIMEOUT = 258, WAIT_FAILED = INFINITE;
HANDLE CreateEventA(void *security, BOOL isManual, BOOL isSet, const char *name);
HANDLE CreateMutexA(void *security, BOOL isTaken, const char *name);
BOOL SetEvent(HANDLE event);
BOOL ResetEvent(HANDLE event);
BOOL ReleaseMutex(HANDLE mutex);
BOOL CloseHandle(HANDLE handle);
DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);
DWORD WaitForMultipleObjects(DWORD count, const HANDLE *handles, BOOL forAll,
                             DWORD milliseconds); // no mutexes
uintptr_t _beginthreadex(void *security, unsigned stackBytes, unsigned (*start)(void *), void *argument,
                         unsigned flags, unsigned *id);
DWORD GetLastError();
DWORD GetTickCount();
struct SYSTEM_INFO {
    DWORD dwNumberOfProcessors;
};
void GetSystemInfo(SYSTEM_INFO *info);

// Regions: rectangles in rows.
constexpr int ERROR = 0, NULLREGION = 1, SIMPLEREGION = 2, COMPLEXREGION = 3;
constexpr int RGN_AND = 1, RGN_OR = 2, RGN_DIFF = 4;
struct RGNDATA {
    struct {
        DWORD dwSize, iType, nCount, nRgnSize;
        RECT rcBound;
    } rdh;
    char Buffer[1];
};
HRGN CreateRectRgn(int left, int top, int right, int bottom);
BOOL SetRectRgn(HRGN region, int left, int top, int right, int bottom);
int CombineRgn(HRGN region, HRGN a, HRGN b, int mode);
int GetRgnBox(HRGN region, RECT *box);
DWORD GetRegionData(HRGN region, DWORD bytes, RGNDATA *data);
HRGN ExtCreateRegion(const void *transform, DWORD bytes, const RGNDATA *data);
BOOL DeleteObject(HGDIOBJ region);
BOOL UnionRect(RECT *to, const RECT *a, const RECT *b);

// There is no screen; what is posted goes to whoever set this, on the thread that posts.
extern void (*gTakePostedMessage)(UINT message, WPARAM wParam, LPARAM lParam);
BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
inline BOOL InvalidateRect(HWND, const RECT *, BOOL) {
    return TRUE;
}
inline BOOL InvalidateRgn(HWND, HRGN, BOOL) {
    return TRUE;
}
inline BOOL GetCursorPos(POINT *) {
    return FALSE;
}
inline BOOL ScreenToClient(HWND, POINT *) {
    return FALSE;
}
inline BOOL GdiFlush() {
    return TRUE;
}
