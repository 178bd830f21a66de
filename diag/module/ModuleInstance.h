// The module that holds this code, and so its resources and its version.
#pragma once

#include <windows.h>

HINSTANCE ModuleInstance();
