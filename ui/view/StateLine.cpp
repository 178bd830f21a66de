#include "ui/view/StateLine.h"

#include "diag/module/ModuleInstance.h"
#include "engine/table/LightSourceTable.h"
#include "resources/DialogControlIds.h"
#include "ui/view/ViewTools.h"

#include <cwchar>
#include <iterator>

namespace {

constexpr size_t kLineCapacity = 160;

bool IsInView(const LightSource &source) {
    const ViewPoint client =
        ClientFromDocument(gViewTools.view, source.X * 4 + source.XQuarter, source.Y * 4 + source.YQuarter);
    return RectContains(gViewTools.view.display, client.x, client.y);
}

void ShowControl(HWND control, bool isShown) {
    if (control && ((GetWindowLongW(control, GWL_STYLE) & WS_VISIBLE) != 0) != isShown)
        ShowWindow(control, isShown ? SW_SHOWNA : SW_HIDE);
}

// A text that is there already stays, so that no reader speaks it again.
void SetLine(HWND line, const wchar_t *text) {
    wchar_t shown[kLineCapacity] = L"";
    GetWindowTextW(line, shown, static_cast<int>(std::size(shown)));
    if (wcscmp(shown, text) != 0)
        SetWindowTextW(line, text);
}

bool HasRoom(HWND line, const wchar_t *text) {
    const HDC dc = GetDC(line);
    if (!dc)
        return false;
    const HGDIOBJ old = SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageW(line, WM_GETFONT, 0, 0)));
    RECT area = {};
    SIZE size = {};
    const bool isKnown =
        GetClientRect(line, &area) && GetTextExtentPoint32W(dc, text, static_cast<int>(wcslen(text)), &size);
    SelectObject(dc, old);
    ReleaseDC(line, dc);
    return isKnown && size.cx <= area.right;
}

// What is hidden may have to stay unsaid.
bool FormatFitting(HWND line, const LightCounts &counts, wchar_t *text, size_t capacity) {
    return (FormatLightCounts(counts, true, text, capacity) && HasRoom(line, text)) ||
           FormatLightCounts(counts, false, text, capacity);
}

} // namespace

LightCounts CountLights(int32_t threshold) {
    const LightSourceTableView table = GetLightSourceTable();
    const uint32_t cutLevel = ThresholdCutLevel(threshold);
    LightCounts counts = {table.count, 0, 0, 0};
    for (uint32_t i = 0; i < table.count; ++i) {
        const LightSource &source = table.records[i];
        counts.hidden += source.State == 0;
        if (!IsLightSourceSelected(source, cutLevel))
            continue;
        ++counts.withStars;
        counts.starsInView += IsInView(source);
    }
    return counts;
}

bool FormatLightCounts(const LightCounts &counts, bool isLong, wchar_t *text, size_t capacity) {
    if (counts.all == 0)
        return swprintf(text, capacity, L"No lights found") >= 0;
    wchar_t hidden[32] = L"";
    const wchar_t *inView = L"";
    if (counts.withStars > 0 && counts.starsInView == 0)
        inView = L", no star in view, Ctrl+O shows all";
    if (counts.hidden > 0 && (isLong || !*inView))
        swprintf(hidden, std::size(hidden), L", %u hidden", counts.hidden);
    const bool fits = swprintf(text, capacity, L"%u %ls, %u with %ls%ls%ls", counts.all,
                               counts.all == 1 ? L"light" : L"lights", counts.withStars,
                               counts.withStars == 1 ? L"a star" : L"stars", hidden, inView) >= 0;
    if (!fits && capacity > 0)
        *text = L'\0';
    return fits;
}

void AddStateLine(HWND dialog) {
    RECT bar = {};
    GetWindowRect(GetDlgItem(dialog, kProgressId), &bar);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&bar), 2);
    // cppcheck-suppress ignoredReturnValue  ; the dialog owns it, and finds it by its number
    CreateWindowExW(0, L"Static", L"", WS_CHILD | SS_CENTERIMAGE | SS_NOPREFIX | SS_ENDELLIPSIS,
                    static_cast<int>(bar.left), static_cast<int>(bar.top),
                    static_cast<int>(bar.right - bar.left), static_cast<int>(bar.bottom - bar.top), dialog,
                    reinterpret_cast<HMENU>(static_cast<INT_PTR>(kStateLineId)), ModuleInstance(), nullptr);
}

void ShowStateLine(HWND dialog, int32_t threshold, bool isWorking, const wchar_t *instead) {
    const HWND line = GetDlgItem(dialog, kStateLineId);
    wchar_t text[kLineCapacity];
    const bool isShown = line && gViewTools.tableReady && !isWorking &&
                         (instead || FormatFitting(line, CountLights(threshold), text, std::size(text)));
    if (isShown)
        SetLine(line, instead ? instead : text);
    ShowControl(line, isShown);
    ShowControl(GetDlgItem(dialog, kProgressId), !isShown);
}
