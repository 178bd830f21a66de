#include "diag/module/ModuleInstance.h"

HINSTANCE ModuleInstance() {
    static const char inThisModule = 0;
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       &inThisModule, &module);
    return module;
}
