/* For Wine only, never shipped: versions before 9 lack this system library, whose one function gives random bytes. */
#include <windows.h>

#include <bcrypt.h>

__declspec(dllexport) BOOL WINAPI ProcessPrng(PBYTE data, SIZE_T length) {
    return BCryptGenRandom(NULL, data, (ULONG)length, BCRYPT_USE_SYSTEM_PREFERRED_RNG) >= 0;
}
