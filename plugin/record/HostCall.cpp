#include "plugin/record/HostCall.h"

#include "diag/ErrorReport.h"

#include <windows.h>

namespace {

constexpr uint32_t kSiteHostCall = 151;
constexpr DWORD kOwnCompilersThrow = 0x20474343;

struct GuardedBody {
    void (*run)(void *);
    void *argument;
    bool threw;
};

bool gFailed;
DWORD gRaisedCode;

} // namespace

// A structured exception handler, which the compiler's language has no words for: calls body(argument) and
// returns true, or false when that raised something which DecideOnRaised takes.
extern "C" bool CallRaising(void (*body)(void *), void *argument);
asm(R"(
    .text
    .globl CallRaising
    .def CallRaising; .scl 2; .type 32; .endef
    .seh_proc CallRaising
CallRaising:
    subq $40, %rsp
    .seh_stackalloc 40
    .seh_endprologue
    movq %rcx, %rax
    movq %rdx, %rcx
.LraisingBegin:
    call *%rax
    nop
.LraisingEnd:
    movl $1, %eax
    jmp .LraisingReturn
.LraisingTaken:
    xorl %eax, %eax
.LraisingReturn:
    addq $40, %rsp
    ret
    .seh_handler __C_specific_handler, @except
    .seh_handlerdata
    .long 1
    .rva .LraisingBegin, .LraisingEnd, DecideOnRaised, .LraisingTaken
    .text
    .seh_endproc
)");

// Only errors are taken: what is no error (a message to a debugger, a thread's end) is meant for others, and
// without a stack there is nothing to go on with.
extern "C" LONG DecideOnRaised(EXCEPTION_POINTERS *raised, void *) {
    gRaisedCode = raised->ExceptionRecord->ExceptionCode;
    const bool isError = gRaisedCode >> 30 == 3;
    return isError && gRaisedCode != EXCEPTION_STACK_OVERFLOW ? EXCEPTION_EXECUTE_HANDLER
                                                              : EXCEPTION_CONTINUE_SEARCH;
}

// What this module's own compiler throws is caught by its own means, which know how to end it.
static void RunCatching(void *argument) {
    auto *body = static_cast<GuardedBody *>(argument);
    try {
        body->run(body->argument);
    } catch (...) {
        body->threw = true;
    }
}

bool RunGuarded(void (*body)(void *), void *argument) {
    GuardedBody guarded = {body, argument, false};
    gRaisedCode = 0;
    if (CallRaising(RunCatching, &guarded) && !guarded.threw)
        return true;
    gFailed = true;
    ReportError({kSiteHostCall, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "A call of the host ended with exception 0x%08lX.",
                guarded.threw ? kOwnCompilersThrow : gRaisedCode);
    return false;
}

HostResult HostFailure() {
    return gFailed ? kErrPlugInHostInsufficient : kNoError;
}

void ForgetHostFailure() {
    gFailed = false;
}
