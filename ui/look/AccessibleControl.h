// What a control says of itself to screen readers, where the system could not tell it from the window.
// Dialog's thread, which has COM.
#pragma once

#include <cstddef>
#include <windows.h>

struct AccessibleTraits {
    wchar_t name[64];
    LONG role;             // ROLE_SYSTEM_...
    const wchar_t *key;    // null: none
    const wchar_t *action; // what a press does; null: nothing. It is the click that a static control tells.
    const wchar_t *description;                                  // null: none
    void (*value)(HWND control, wchar_t *text, size_t capacity); // null: the system's
    bool (*isPressed)(HWND control);                             // null: it never is
    bool hasPopup;
};

// From now on, until the window is destroyed; also for whoever still holds on to the object then. False
// without memory.
bool DescribeControl(HWND control, const AccessibleTraits &traits);
// The state has changed in another way than the system can see.
void TellAccessibleState(HWND control);
