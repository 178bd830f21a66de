#include "plugin/record/HostProgress.h"

#include "plugin/record/HostCall.h"
#include "plugin/record/PluginState.h"

HostResult ReportProgress(int32_t done, int32_t total) {
    void (*progressProc)(int32_t, int32_t) = gFilterRecord->progressProc;
    if (progressProc)
        CallHost(progressProc, done, total);
    return HostFailure();
}

bool HasUserCancelled() {
    HostBoolean (*abortProc)() = gFilterRecord->abortProc;
    return abortProc && CallHost(abortProc) != 0;
}
