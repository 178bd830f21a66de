#include "ui/window/ControlStyle.h"

#include "diag/module/ModuleInstance.h"
#include "resources/ResourceIds.h"

#include <windows.h>

ControlStyle EnterControlStyle() {
    ACTCTXW description = {};
    description.cbSize = sizeof description;
    description.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
    description.hModule = ModuleInstance();
    description.lpResourceName = MAKEINTRESOURCEW(kControlsManifestId);
    const HANDLE context = CreateActCtxW(&description);
    if (context == INVALID_HANDLE_VALUE)
        return {};
    ULONG_PTR cookie = 0;
    if (ActivateActCtx(context, &cookie))
        return {context, cookie};
    ReleaseActCtx(context);
    return {};
}

void LeaveControlStyle(const ControlStyle &style) {
    if (!style.context)
        return;
    DeactivateActCtx(0, style.cookie);
    ReleaseActCtx(style.context);
}
