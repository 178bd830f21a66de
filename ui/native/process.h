// As on Windows: what begins a thread.
#pragma once

#include <windows.h>
