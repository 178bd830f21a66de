#include "ui/dialog/MainDialogState.h"

#include "ui/fields/ParameterTable.h"

DialogSubject gDialogSubject;
MainDialog gMainDialog;

namespace {

// For a dialog that somebody opens without a run.
ParameterSet gOwnParameters = kDefaultParameters;

} // namespace

const wchar_t *NoColorText(int parameter) {
    if (!gDialogSubject.image || gDialogSubject.image->colorPlanes != 1)
        return nullptr;
    if (parameter == kColorSaturation)
        return L"No effect: this image is grayscale";
    const bool isRainbow = parameter == kRainbowIntensity || parameter == kRainbowFrequency;
    return isRainbow ? L"No colors, only light and dark: this image is grayscale" : nullptr;
}

const wchar_t *NoColorTextOf(HWND control) {
    for (int i = 0; control && i < kParameterControlCount; ++i)
        if (gParameterControls[i].edit == control || gParameterControls[i].trackbar == control)
            return NoColorText(i);
    return nullptr;
}

ParameterSet *DialogParameters() {
    return gDialogSubject.parameters ? gDialogSubject.parameters : &gOwnParameters;
}
