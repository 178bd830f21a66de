#include "ui/dialog/DialogTooltips.h"

#include "diag/WidePath.h"
#include "diag/module/ModuleInstance.h"
#include "resources/DialogControlIds.h"
#include "ui/dialog/MainDialogState.h"
#include "ui/fields/ParameterControls.h"
#include "ui/look/DialogLayout.h"
#include "ui/view/ViewTools.h"
#include "ui/window/DropDownList.h"
#include "ui/window/Tooltips.h"

#include <commctrl.h>
#include <cwchar>
#include <iterator>
#include <utility>

namespace {

constexpr int kWidestText = 320;             // pixels at 100 %; longer texts are broken into lines
constexpr LPARAM kShownMilliseconds = 15000; // long enough to read the longest

struct ControlText {
    int controlId;
    const char *text;
};

// The key letter that a text names is the text's own and not always the accelerator's.
constexpr char kSettingsText[] = "Settings (T) - Select a set of saved parameters";

constexpr ControlText kTexts[] = {
    {IDOK, "OK - Commit changes and return to the editor"},
    {IDCANCEL, "Cancel (Esc) - Close the dialog without making any changes"},
    {kPreviewOnId,
     "Preview (P) - Check to see a preview of the modified image, uncheck to see the original image"},
    {kHelpId, "Click here for links to help and support resources"},
    {kProductLogoId, "Brillatrix Pro version information, help, and online resources"},
    {kMakerLogoId, "Visit the Nexorvanta Software web site"},
    {kSettingsComboId, kSettingsText},
    {kEffectComboId, "Effect (:) - Select the type of Star Effect to apply to the image."},
    {kCompareId, "Compare (B) - Hold down the key or the mouse to see the image without stars"},
    {kSettingsMenuIconControlId, "Settings Menu (M) - Load, save or delete a set of parameters"},
    {kZoomOutButtonId, "Zoom Out (Ctrl+-) - Show more of the image"},
    {kZoomInButtonId, "Zoom In (Ctrl++) - Show the image larger"},
    {kZoomTextId,
     "Zoom (V) - Click to choose the size at which the image is shown, F2 or Ctrl+click to type it"},
    {kZoomArrowId, "Zoom (V) - Click to choose the size at which the image is shown"},
    {kEffectsOnlyId,
     "Output Effects Only (O) - Check to output the effects only, excluding the original image"},
};

// In the second line, where a parameter does less to the image than its name says.
void TellWhatHasNoColor(HWND dialog, HWND tooltips) {
    for (int i = 0; i < kParameterControlCount; ++i) {
        const ParameterControl &row = gParameterControls[i];
        const wchar_t *told = NoColorText(i);
        if (!told)
            continue;
        for (const auto &[controlId, text] : {std::pair<int, const char *>{row.editId, row.editTooltip},
                                              {row.trackbarId, row.trackbarTooltip}}) {
            wchar_t lines[kMaxPath];
            swprintf(lines, std::size(lines), L"%hs\r\n%ls", text, told);
            ChangeTooltip(dialog, tooltips, controlId, lines);
        }
    }
}

} // namespace

void FitTooltipsToScale(HWND tooltips) {
    const int widest = MulDiv(kWidestText, static_cast<int>(DialogLayoutDpi()), USER_DEFAULT_SCREEN_DPI);
    SendMessageA(tooltips, TTM_SETMAXTIPWIDTH, 0, widest);
}

HWND CreateDialogTooltips(HWND dialog) {
    const HWND tooltips = CreateWindowExA(
        WS_EX_TOPMOST, TOOLTIPS_CLASSA, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, CW_USEDEFAULT,
        CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, dialog, nullptr, ModuleInstance(), nullptr);
    if (!tooltips)
        return nullptr;
    KeepTooltipsClear(tooltips);
    FitTooltipsToScale(tooltips);
    SendMessageA(tooltips, TTM_SETDELAYTIME, TTDT_AUTOPOP, kShownMilliseconds);
    for (const ControlText &entry : kTexts)
        AddTooltip(dialog, tooltips, entry.controlId, entry.text);
    RegisterParameterTooltips(dialog, tooltips);
    RegisterViewTooltips(dialog, tooltips);
    TellWhatHasNoColor(dialog, tooltips);
    return tooltips;
}

void PrepareTooltip(HWND dialog, HWND tooltips, HWND control) {
    if (!tooltips || control != GetDlgItem(dialog, kSettingsComboId))
        return;
    wchar_t name[kMaxPath], text[kMaxPath + sizeof kSettingsText + 2];
    const bool isCut = IsSelectedTextCut(control, name, kMaxPath);
    swprintf(text, std::size(text), isCut ? L"%hs\r\n%ls" : L"%hs", kSettingsText, name);
    ChangeTooltip(dialog, tooltips, kSettingsComboId, text);
}
