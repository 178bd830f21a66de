#include "ui/dialog/EffectList.h"

#include "diag/ErrorReport.h"
#include "render/shape/EffectTypes.h"
#include "resources/DialogControlIds.h"
#include "ui/fields/ParameterTable.h"
#include "ui/fields/ParameterValue.h"
#include "ui/look/DialogLayout.h"
#include "ui/pixels/TypePictures.h"
#include "ui/window/DialogMessages.h"
#include "ui/window/Palette.h"

#include <algorithm>
#include <array>

namespace {

constexpr uint32_t kSiteUnknownEffect = 292;
constexpr int kPictureRow = 24; // pixels at 100 %
constexpr LONG kTextMargin = 2; // pixels, as the control itself has

LRESULT SendToList(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return SendDlgItemMessageW(dialog, kEffectComboId, message, wParam, lParam);
}

void ProposePoints(const EffectRow &row, ParameterSet *parameters) {
    SelectEffectType(row.effectType, parameters);
}

const EffectRow *SelectedEffectRow(HWND dialog) {
    const LRESULT index = SendToList(dialog, CB_GETCURSEL, 0, 0);
    if (index < 0)
        return nullptr;
    const LRESULT data = SendToList(dialog, CB_GETITEMDATA, static_cast<WPARAM>(index), 0);
    return data == CB_ERR ? nullptr : reinterpret_cast<const EffectRow *>(data);
}

// In the order of the table.
constexpr std::array<EffectRow, kEffectTypeCount> MakeEffectRows() {
    std::array<EffectRow, kEffectTypeCount> rows{};
    for (size_t i = 0; i < rows.size(); ++i)
        rows[i] = {kEffectTypes[i].code, kEffectTypes[i].name, ProposePoints};
    return rows;
}
constexpr auto kEffectRows = MakeEffectRows();

int HeightOf(HWND dialog, int controlId) {
    RECT rect = {};
    GetWindowRect(GetDlgItem(dialog, controlId), &rect);
    return static_cast<int>(rect.bottom - rect.top);
}

// False while there are no pictures yet.
bool DrawTypePicture(HDC dc, int type, int left, int top, int wanted) {
    uint32_t pixels[kTypePictureSide * kTypePictureSide];
    const int side = std::min(wanted, kTypePictureSide);
    if (!ShrinkTypePicture(type, side, pixels))
        return false;
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof info.bmiHeader, side, -side, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    SetDIBitsToDevice(dc, left, top, static_cast<DWORD>(side), static_cast<DWORD>(side), 0, 0, 0,
                      static_cast<UINT>(side), pixels, &info, DIB_RGB_COLORS);
    return true;
}

void DrawRowText(const DRAWITEMSTRUCT &item, LONG left) {
    const bool isSelected = (item.itemState & ODS_SELECTED) != 0;
    RECT text = item.rcItem;
    text.left += left;
    SetBkMode(item.hDC, TRANSPARENT);
    SetTextColor(item.hDC, ColorOf(item.itemState & ODS_DISABLED ? kGreyTextColor
                                   : isSelected                  ? kHighlightTextColor
                                                                 : kFieldTextColor));
    DrawTextW(item.hDC, kEffectTypes[item.itemID].name, -1, &text, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
}

} // namespace

void FitEffectList(HWND dialog) {
    const int scaled = MulDiv(kPictureRow, static_cast<int>(DialogLayoutDpi()), USER_DEFAULT_SCREEN_DPI);
    // What a field has around its text differs from system to system.
    const LRESULT closed = SendDlgItemMessageW(dialog, kSettingsComboId, CB_GETITEMHEIGHT, WPARAM(-1), 0);
    SendToList(dialog, CB_SETITEMHEIGHT, WPARAM(-1), closed);
    const int more = HeightOf(dialog, kEffectComboId) - HeightOf(dialog, kSettingsComboId);
    SendToList(dialog, CB_SETITEMHEIGHT, WPARAM(-1), closed - more);
    SendToList(dialog, CB_SETITEMHEIGHT, 0, scaled);
}

bool DrawEffectRow(const DRAWITEMSTRUCT &item) {
    if (item.CtlID != static_cast<UINT>(kEffectComboId))
        return false;
    const bool isSelected = (item.itemState & ODS_SELECTED) != 0;
    FillWith(item.hDC, item.rcItem, isSelected ? kHighlightColor : kFieldColor);
    if (item.itemID < static_cast<UINT>(kEffectTypeCount)) {
        LONG left = kTextMargin;
        if (!(item.itemState & ODS_COMBOBOXEDIT)) {
            const int side = static_cast<int>(item.rcItem.bottom - item.rcItem.top) - 2;
            if (DrawTypePicture(item.hDC, static_cast<int>(item.itemID),
                                static_cast<int>(item.rcItem.left) + 1, static_cast<int>(item.rcItem.top) + 1,
                                side))
                left += side + kTextMargin + kTextMargin;
        }
        DrawRowText(item, left);
    }
    if ((item.itemState & ODS_FOCUS) && !(item.itemState & ODS_NOFOCUSRECT))
        DrawFocusRect(item.hDC, &item.rcItem);
    return true;
}

void RedrawEffectRows(HWND dialog) {
    COMBOBOXINFO info = {};
    info.cbSize = sizeof info;
    if (GetComboBoxInfo(GetDlgItem(dialog, kEffectComboId), &info))
        InvalidateRect(info.hwndList, nullptr, FALSE);
}

void FillEffectList(HWND dialog, uint32_t effectType) {
    for (const EffectRow &row : kEffectRows) {
        const LRESULT index = SendToList(dialog, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row.name));
        if (index >= 0)
            SendToList(dialog, CB_SETITEMDATA, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&row));
    }
    FitEffectList(dialog);
    ShowEffectType(dialog, effectType);
}

void ShowEffectType(HWND dialog, uint32_t effectType) {
    const EffectRow *selected = SelectedEffectRow(dialog);
    if (selected && selected->effectType == effectType)
        return;
    SendToList(dialog, CB_SETCURSEL, static_cast<WPARAM>(FindEffectType(effectType)), 0);
}

void OnEffectChosen(HWND dialog, ParameterSet *parameters) {
    const EffectRow *row = SelectedEffectRow(dialog);
    if (!row)
        return;
    parameters->effectType = row->effectType;
    if (row->onSelected)
        row->onSelected(*row, parameters);
    SendMessageW(dialog, kMsgParameterChanged, 0, 0);
}

void SelectEffectType(uint32_t effectType, ParameterSet *parameters) {
    const int32_t points = PresetPoints(effectType);
    if (points == 0) {
        ReportError({kSiteUnknownEffect, kUserMessage, 0}, kStopIcon, kTitleUnexpected,
                    "An invalid Effects Selection Index was specified.");
        return;
    }
    ParameterControl &row = gParameterControls[kNumberOfPoints];
    const int16_t clamped = ClampToRow(row, points);
    if (!IsBound(row)) {
        parameters->numberOfPoints = clamped;
        return;
    }
    if (clamped == *row.value)
        return;
    MoveTrackbar(row, clamped);
    TakeParameterValue(&row, clamped);
}
