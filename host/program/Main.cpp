// Start of brillatrix.exe.
#include "host/base/Console.h"
#include "host/program/PhotoRun.h"
#include "host/program/Program.h"

#include <windows.h>

#include <cstdio>

// A crash inside the plug-in would end the program with a number that means something else.
static LONG WINAPI OnCrash(EXCEPTION_POINTERS *crash) {
    char text[96];
    std::snprintf(text, sizeof(text), "brillatrix: the plug-in crashed (code 0x%08lX)\n",
                  static_cast<unsigned long>(crash->ExceptionRecord->ExceptionCode));
    host::PrintError(text);
    TerminateProcess(GetCurrentProcess(), host::kExitPlugin);
    return EXCEPTION_EXECUTE_HANDLER;
}

int wmain(int argc, wchar_t **argv) {
    SetUnhandledExceptionFilter(OnCrash);
    return host::RunProgram({argv + 1, argv + argc});
}
