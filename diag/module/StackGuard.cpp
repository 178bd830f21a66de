// The value that protected functions keep beside their arrays, and what happens when it was overwritten. The
// compiler's own run-time library would ask for a cryptographic provider while the module is loaded: half of
// the time that loading takes, and libraries loaded inside the loader's lock.
#if defined(__MINGW32__)

#include <cstdint>
#include <windows.h>

namespace {

constexpr uint64_t kMixing = 0x9E3779B97F4A7C15; // the golden ratio, as Fibonacci hashing takes it

uint64_t Mixed(uint64_t value, uint64_t more) {
    value = (value ^ more) * kMixing;
    return value ^ value >> 29;
}

// From what differs between processes and runs; addresses are drawn at every load. The lowest byte is 0: a
// text copied over the value ends before the value is whole.
uint64_t MakeStackGuard() {
    LARGE_INTEGER counter = {};
    FILETIME now = {};
    QueryPerformanceCounter(&counter);
    GetSystemTimeAsFileTime(&now);
    uint64_t value = Mixed(uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime,
                           static_cast<uint64_t>(counter.QuadPart));
    value = Mixed(value, uint64_t{GetCurrentProcessId()} << 32 | GetCurrentThreadId());
    value = Mixed(value, reinterpret_cast<uintptr_t>(&counter));
    return Mixed(value, reinterpret_cast<uintptr_t>(&MakeStackGuard)) & ~uint64_t{0xFF};
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the compiler's names for them

// Set while the module is loaded, before it has any thread, and never again.
extern "C" uint64_t __stack_chk_guard;
uint64_t __stack_chk_guard = MakeStackGuard();

// No stack is left to trust: ends the process without any handler, and tells the system why.
extern "C" [[noreturn]] void __stack_chk_fail() {
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = static_cast<DWORD>(STATUS_STACK_BUFFER_OVERRUN);
    record.ExceptionFlags = EXCEPTION_NONCONTINUABLE;
    RaiseFailFastException(&record, nullptr, FAIL_FAST_GENERATE_EXCEPTION_ADDRESS);
    TerminateProcess(GetCurrentProcess(), record.ExceptionCode);
    for (;;) // not reached
        Sleep(INFINITE);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

#endif
