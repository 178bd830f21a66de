// Start of brillatrix.exe.
#include "host/base/Console.h"
#include "host/program/PhotoRun.h"
#include "host/program/Program.h"

#include <windows.h>

#include <cstdio>
#include <cwchar>

static bool gIsWorker;

// A crash inside the plug-in would end the program with a number that means something else. A worker ends
// with the number of the crash, which its batch tells.
static LONG WINAPI OnCrash(EXCEPTION_POINTERS *crash) {
    if (gIsWorker)
        TerminateProcess(GetCurrentProcess(), crash->ExceptionRecord->ExceptionCode);
    char text[96];
    std::snprintf(text, sizeof(text), "brillatrix: the plug-in crashed (code 0x%08lX)\n",
                  static_cast<unsigned long>(crash->ExceptionRecord->ExceptionCode));
    host::PrintError(text);
    TerminateProcess(GetCurrentProcess(), host::kExitPlugin);
    return EXCEPTION_EXECUTE_HANDLER;
}

int wmain(int argc, wchar_t **argv) {
    gIsWorker = argc > 1 && std::wcscmp(argv[1], L"worker") == 0;
    SetUnhandledExceptionFilter(OnCrash);
    return host::RunProgram({argv + 1, argv + argc});
}
