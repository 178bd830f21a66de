// The module that holds this code, and so the dialog's resources.
#pragma once

#include <windows.h>

HINSTANCE ModuleInstance();
