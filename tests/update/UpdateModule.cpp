// The update notice in a module of its own.
#include "storage/AppFolders.h"
#include "web/UpdateNotice.h"
#include "web/UpdateRequest.h"

#include <cstdio>

static char gAddress[256];

UpdateService CurrentUpdateService() {
    return {gAddress, true};
}

extern "C" __declspec(dllexport) void BeginCheck(const char *settingsFolder, const char *address) {
    snprintf(gSettingsFolder, sizeof gSettingsFolder, "%s", settingsFolder);
    snprintf(gAddress, sizeof gAddress, "%s", address);
    SetUpdateNotice(true);
    StartUpdateCheck();
}
