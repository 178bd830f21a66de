#include "ui/window/WindowPlacement.h"

#include "host/module/ModuleImports.h"
#include "ui/window/DesktopWindow.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>

namespace {

bool operator==(const RECT &a, const RECT &b) {
    return EqualRect(&a, &b) != FALSE;
}

RECT PrimaryWorkArea() {
    RECT area = {};
    SystemParametersInfoA(SPI_GETWORKAREA, 0, &area, 0);
    return area;
}

bool LiesIn(const RECT &rect, const RECT &area) {
    return rect.left >= area.left && rect.top >= area.top && rect.right <= area.right &&
           rect.bottom <= area.bottom;
}

// Saved on a larger screen, what lies at its bottom, and the corner to size it by, would be out of reach.
TEST(WindowPlacement, WindowsOnAMonitorStayAndOthersComeBackWholeOrCutDown) {
    const RECT area = PrimaryWorkArea();
    const RECT last = {area.right - 400, area.bottom - 300, area.right, area.bottom};
    const std::pair<RECT, RECT> places[] = {
        {{100, 100, 500, 400}, {100, 100, 500, 400}},
        {{area.right - 50, 100, area.right + 300, 400}, {area.right - 50, 100, area.right + 300, 400}},
        {{100, area.bottom - 50, 500, area.bottom + 300}, {100, area.bottom - 50, 500, area.bottom + 300}},
        {{30000, 20000, 30400, 20300}, last},
        {{-5000, -5000, -4600, -4700}, {area.left, area.top, area.left + 400, area.top + 300}},
        {{100, -290, 500, 10}, {100, area.top, 500, area.top + 300}},
        {{100, area.top - 5, 500, area.top + 295}, {100, area.top - 5, 500, area.top + 295}},
        {{100, 100, 900, area.bottom + 300}, {100, area.top, 900, area.bottom}},
        {{100, 100, area.right + 101, 400}, {area.left, 100, area.right, 400}}};
    for (const auto &[rect, placed] : places)
        EXPECT_TRUE(PlaceOnMonitor(rect) == placed) << rect.left << " " << rect.top;
}

// Snapped to the full height, where the resize borders that nobody sees lie outside.
TEST(WindowPlacement, WhatCannotBeSeenMayLieOutside) {
    const RECT area = PrimaryWorkArea(), hidden = {7, 0, 7, 7};
    const RECT snapped = {area.left - 7, area.top, area.left + 607, area.bottom + 7};
    EXPECT_TRUE(PlaceOnMonitor(snapped, hidden) == snapped);
    EXPECT_FALSE(PlaceOnMonitor(snapped) == snapped);
    EXPECT_TRUE(PlaceOnMonitor({100, 100, 900, area.bottom + 300}, hidden) ==
                (RECT{100, area.top, 900, area.bottom + 7}));
}

// The system's answer, where it has one: a frame, or for a window not shown yet its own rectangle.
RECT gVisibleFrame;

HRESULT WINAPI TellVisibleFrame(HWND window, DWORD attribute, void *value, DWORD size) {
    if (attribute != 9 || size != sizeof(RECT))
        return E_INVALIDARG;
    if (IsRectEmpty(&gVisibleFrame))
        GetWindowRect(window, &gVisibleFrame);
    *static_cast<RECT *>(value) = gVisibleFrame;
    return S_OK;
}

const auto gFindFunction = GetProcAddress;

FARPROC WINAPI FindFunction(HMODULE library, LPCSTR name) {
    return std::string(name) == "DwmGetWindowAttribute"
               ? reinterpret_cast<FARPROC>(reinterpret_cast<void *>(TellVisibleFrame))
               : gFindFunction(library, name);
}

TEST(WindowPlacement, TheFrameThatIsSeenIsTheSystemsToTell) {
    const HWND window = CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW, 50, 60, 300, 200, nullptr,
                                        nullptr, nullptr, nullptr);
    EXPECT_TRUE(InvisibleFrame(window) == RECT{}) << "this system tells nothing";
    host::ImportHooks hooks;
    host::ReplaceImport(GetModuleHandleA(nullptr), "GetProcAddress", FindFunction, &hooks);
    gVisibleFrame = {57, 60, 343, 253};
    EXPECT_TRUE(InvisibleFrame(window) == (RECT{7, 0, 7, 7}));
    gVisibleFrame = {};
    const LONG hidden = GetSystemMetrics(SM_CXSIZEFRAME) + GetSystemMetrics(SM_CXPADDEDBORDER) - 1;
    EXPECT_TRUE(InvisibleFrame(window) == (RECT{hidden, 0, hidden, hidden}));
    host::RestoreImports(&hooks);
    DestroyWindow(window);
}

TEST(WindowPlacement, AnyNumbersEndInsideTheArea) {
    const RECT area = {-1280, 40, 0, 1000};
    EXPECT_TRUE(MoveIntoArea({-100, 900, 100, 1100}, area) == (RECT{-200, 800, 0, 1000}));
    EXPECT_TRUE(MoveIntoArea({-9000, 0, 9000, 500}, area) == (RECT{-1280, 40, 0, 540}));
    for (const RECT &rect : {RECT{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, RECT{INT_MAX - 1, 5, INT_MAX, 6},
                             RECT{INT_MIN, INT_MIN, INT_MIN, INT_MIN}, RECT{10, 10, -10, -10}}) {
        EXPECT_TRUE(LiesIn(MoveIntoArea(rect, area), area));
        PlaceOnMonitor(rect);
    }
}

} // namespace
