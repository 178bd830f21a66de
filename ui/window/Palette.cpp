#include "ui/window/Palette.h"

namespace {

constexpr wchar_t kThemeKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize";
constexpr wchar_t kThemeValue[] = L"AppsUseLightTheme";

struct Entry {
    int system;
    COLORREF dark;
};

constexpr Entry kPalette[kPaletteSize] = {
    {COLOR_3DFACE, RGB(40, 40, 42)},
    {COLOR_BTNTEXT, RGB(232, 232, 232)},
    {COLOR_GRAYTEXT, RGB(140, 140, 142)},
    {COLOR_WINDOW, RGB(28, 28, 30)},
    {COLOR_WINDOWTEXT, RGB(240, 240, 240)},
    {COLOR_3DSHADOW, RGB(98, 98, 102)},
    {COLOR_HIGHLIGHT, RGB(38, 103, 170)},
    {COLOR_HIGHLIGHTTEXT, RGB(255, 255, 255)},
    {COLOR_3DFACE, RGB(58, 58, 61)},
    {COLOR_3DHIGHLIGHT, RGB(70, 70, 74)},
    {COLOR_3DSHADOW, RGB(48, 48, 51)},
    {COLOR_HOTLIGHT, RGB(110, 176, 240)},
    {COLOR_HOTLIGHT, RGB(118, 185, 250)},
};

bool gIsDark = false;

bool HasContrastTheme() {
    HIGHCONTRASTW contrast = {};
    contrast.cbSize = sizeof contrast;
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) &&
           (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

// Systems that know of no dark apps have no such value.
bool AppsAreDark() {
    DWORD isLight = 1, size = sizeof isLight;
    return RegGetValueW(HKEY_CURRENT_USER, kThemeKey, kThemeValue, RRF_RT_REG_DWORD, nullptr, &isLight,
                        &size) == ERROR_SUCCESS &&
           isLight == 0;
}

} // namespace

COLORREF ColorOf(PaletteColor color) {
    return gIsDark ? kPalette[color].dark : GetSysColor(kPalette[color].system);
}

void FillWith(HDC dc, const RECT &rect, PaletteColor color) {
    SetDCBrushColor(dc, ColorOf(color));
    FillRect(dc, &rect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void FrameWith(HDC dc, const RECT &rect, PaletteColor color) {
    SetDCBrushColor(dc, ColorOf(color));
    FrameRect(dc, &rect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

HBRUSH ControlBrush(HDC dc, PaletteColor back, PaletteColor text) {
    SetTextColor(dc, ColorOf(text));
    SetBkColor(dc, ColorOf(back));
    SetDCBrushColor(dc, ColorOf(back));
    return static_cast<HBRUSH>(GetStockObject(DC_BRUSH));
}

bool IsDarkLook() {
    return gIsDark;
}

bool ReadLook() {
    const bool wasDark = gIsDark;
    gIsDark = AppsAreDark() && !HasContrastTheme();
    return gIsDark != wasDark;
}
