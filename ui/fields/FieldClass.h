// The window class of the edit fields.
#pragma once

#include <windows.h>

struct FieldClass {
    HMODULE library; // null: plain edit fields have the class's name
};

// Before a dialog with fields opens, and after it has closed.
FieldClass EnterFieldClass();
void LeaveFieldClass(const FieldClass &fieldClass);
