// Counts the system's objects that the code under test makes and gives back, makes a chosen call fail, and
// keeps what was invalidated. It stands in the import table of one module: the test program's own or a loaded
// filter.
#pragma once

#include "host/module/ModuleImports.h"

#include <map>
#include <string>
#include <vector>
#include <windows.h>

// Puts the counting into the module's import table and starts at nothing. For one module at a time.
void CountSystemObjects(HMODULE module, host::ImportHooks *hooks);
// The same for the test program itself, until it ends. Returns true: to be called from a variable's start
// value.
bool CountOwnSystemObjects();

// Objects made and not given back: bitmaps, contexts, brushes, fonts, regions, icons, menus, hooks, windows
// that are open, window classes, files, events, mutexes, threads, global blocks that are not the clipboard's,
// openings of the clipboard; by the name of the call that made them.
std::map<std::string, int> LiveObjects();
// Of them, drawing objects and icons.
int LiveDrawingObjects();
// Made since the counting began, all kinds.
long ObjectsMade();

// The n-th call of that name from now on (1 = the next) fails with the given error, once. kAnyDrawingCall
// stands for every call that makes a drawing object or an icon. n = 0: none fails.
inline constexpr char kAnyDrawingCall[] = "any";
void FailSystemCall(const char *name, int n, DWORD error);

// What was invalidated since the last call; an empty rectangle stands for a whole window.
std::vector<RECT> TakeInvalidations();
