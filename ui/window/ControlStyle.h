// The system's present look for the controls of our windows, in hosts too whose own controls have the old
// one. A thread has it between enter and leave, which nest; any thread.
#pragma once

#include <cstdint>

struct ControlStyle {
    void *context; // null: the look could not be had, and the host's stays
    uintptr_t cookie;
};

ControlStyle EnterControlStyle();
void LeaveControlStyle(const ControlStyle &style);
