#include "ui/dialog/MainDialogState.h"

DialogSubject gDialogSubject;
MainDialog gMainDialog;

namespace {

// For a dialog that somebody opens without a run.
ParameterSet gOwnParameters = kDefaultParameters;

} // namespace

ParameterSet *DialogParameters() {
    return gDialogSubject.parameters ? gDialogSubject.parameters : &gOwnParameters;
}
