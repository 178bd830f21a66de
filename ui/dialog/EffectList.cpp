#include "ui/dialog/EffectList.h"

#include "diag/ErrorReport.h"
#include "render/shape/EffectTypes.h"
#include "resources/DialogControlIds.h"
#include "ui/fields/ParameterTable.h"
#include "ui/fields/ParameterValue.h"
#include "ui/window/DialogMessages.h"

#include <array>

namespace {

constexpr uint32_t kSiteUnknownEffect = 292;

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
constexpr auto kEffectRows = [] {
    std::array<EffectRow, kEffectTypeCount> rows{};
    for (size_t i = 0; i < rows.size(); ++i)
        rows[i] = {kEffectTypes[i].code, kEffectTypes[i].name, ProposePoints};
    return rows;
}();

} // namespace

void FillEffectList(HWND dialog, uint32_t effectType) {
    for (const EffectRow &row : kEffectRows) {
        const LRESULT index = SendToList(dialog, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row.name));
        if (index >= 0)
            SendToList(dialog, CB_SETITEMDATA, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&row));
    }
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
