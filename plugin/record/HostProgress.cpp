#include "plugin/record/HostProgress.h"

#include "plugin/record/PluginState.h"

void ReportProgress(int32_t done, int32_t total) {
    void (*progressProc)(int32_t, int32_t) = gFilterRecord->progressProc;
    if (progressProc)
        progressProc(done, total);
}

bool HasUserCancelled() {
    HostBoolean (*abortProc)() = gFilterRecord->abortProc;
    return abortProc && abortProc() != 0;
}
