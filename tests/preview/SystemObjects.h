// Counts the system's objects that the code under test makes and gives back, makes a chosen creation fail,
// and keeps what was invalidated.
#pragma once

#include <string>
#include <vector>
#include <windows.h>

// Objects alive, by the name of the call that made them; "CreateRectRgn 3, ..." for messages.
int LiveSystemObjects();
std::string LiveSystemObjectNames();
// Creations made so far.
long SystemObjectsMade();

// The n-th call of that name from now on (1 = the next) fails with the given error, once. An empty name:
// none.
void FailSystemCall(const char *name, int n, DWORD error);

// What was invalidated since the last call; an empty rectangle stands for a whole window.
std::vector<RECT> TakeInvalidations();
