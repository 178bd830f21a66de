// The controls around the display: tool icons, zoom text and buttons, menu, scroll bars, fit commands.
#include "resources/DialogControlIds.h"
#include "tests/view/ViewFixture.h"
#include "ui/display/PreviewComparison.h"
#include "ui/display/PreviewDisplayCursor.h"
#include "ui/display/PreviewDisplayKeys.h"
#include "ui/display/PreviewDisplayMouse.h"
#include "ui/display/PreviewDisplayState.h"
#include "ui/view/ViewMenu.h"

#include <string>

namespace {

class ViewControls : public ViewTest {
protected:
    void SetUp() override {
        ViewTest::SetUp();
        Open();
    }

    bool IsEnabled(int id) { return IsWindowEnabled(GetDlgItem(window, id)) != FALSE; }
    SCROLLINFO Bar(int id) {
        SCROLLINFO info = {};
        info.cbSize = sizeof info;
        info.fMask = SIF_ALL;
        GetScrollInfo(GetDlgItem(window, id), SB_CTL, &info);
        return info;
    }
    void Scroll(int id, int code, int position = 0) {
        const HWND bar = GetDlgItem(window, id);
        SendMessageA(window, id == kHorizontalBarId ? WM_HSCROLL : WM_VSCROLL,
                     MAKEWPARAM(code, static_cast<WORD>(position)), reinterpret_cast<LPARAM>(bar));
        PumpMessages();
    }
    void PickFromMenu(int command) {
        gZoomMenu.command = command;
        ShowZoomMenu({100, 100}, TPM_LEFTALIGN);
        PumpMessages();
    }
    bool IsDisplayInvalid() { return GetUpdateRect(display, nullptr, FALSE) != FALSE; }
    // The text, and which of the buttons can be used and looks so.
    void ExpectZoomShown(const char *text, bool in, bool out) {
        char shown[50] = "";
        GetDlgItemTextA(window, kZoomTextId, shown, sizeof shown);
        EXPECT_STREQ(shown, text);
        EXPECT_EQ(IsEnabled(kZoomInButtonId), in);
        EXPECT_EQ(IsEnabled(kZoomOutButtonId), out);
        EXPECT_EQ(pictures[kZoomInButtonId], in ? kPictureNormal : kPictureDisabled);
        EXPECT_EQ(pictures[kZoomOutButtonId], out ? kPictureNormal : kPictureDisabled);
    }
    void ExpectToolPictures(ToolPicture pan, ToolPicture zoom, ToolPicture hide, ToolPicture show) {
        EXPECT_EQ(pictures[kPanIconId], pan);
        EXPECT_EQ(pictures[kZoomIconId], zoom);
        EXPECT_EQ(pictures[kHideIconId], hide);
        EXPECT_EQ(pictures[kShowIconId], show);
    }
};

constexpr ToolPicture kNormal = kPictureNormal, kSelected = kPictureSelected, kDisabled = kPictureDisabled;

// The first painting shows the stored tool; the effect tools, which need the light source table, give way to
// Zoom.
TEST_F(ViewControls, ToolsAreStoredShownAndTakeTheirCursors) {
    EXPECT_EQ(gFakePreview.starts, 1);
    ExpectToolPictures(kNormal, kSelected, kDisabled, kDisabled);
    for (const uint32_t stored : {kToolPan, kToolHide, kToolShow}) {
        Close();
        SetViewTool(stored);
        Open();
        EXPECT_EQ(gViewTools.tool, stored == kToolPan ? kToolPan : kToolZoom);
        EXPECT_EQ(GetViewTool(), gViewTools.tool);
    }
    Use(kToolZoom);
    SelectViewTool(kToolPan);
    EXPECT_EQ(gPreviewDisplay.cursor, kCursorZoomIn) << "the cursor is picked by the posted message";
    PumpMessages();
    EXPECT_EQ(gPreviewDisplay.cursor, kCursorOpenHand);
    SelectViewTool(kToolNone);
    EXPECT_EQ(gViewTools.tool, kToolPan);
    EXPECT_EQ(GetViewTool(), kToolPan);
    ExpectToolPictures(kSelected, kNormal, kDisabled, kDisabled);
    SetLightSources();
    EXPECT_TRUE(IsEnabled(kHideIconId) && IsEnabled(kShowIconId));
    ExpectToolPictures(kSelected, kNormal, kNormal, kNormal);
    SelectViewTool(kToolHide);
    ExpectToolPictures(kNormal, kNormal, kSelected, kNormal);
}

TEST_F(ViewControls, TextAndButtonsFollowTheZoom) {
    ExpectZoomShown(" 100.00%", true, true);
    SetZoom(1200.0);
    ZoomIn();
    ExpectZoomShown(" 1600.00%", false, true);
    SetZoom(0.5);
    ZoomOut();
    ExpectZoomShown(" 0.30%", true, false);
}

TEST_F(ViewControls, EveryZoomAndEverySizeAsksForAPreviewAndRedraws) {
    CenterPreview(1000, 900);
    PumpMessages();
    previewRequests = 0;
    SetWindowPos(display, nullptr, 0, 0, 502, 202, SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_TRUE(IsDisplayInvalid());
    PumpMessages();
    EXPECT_EQ(previewRequests, 1);
    ExpectCenter(1000, 900);
    EXPECT_EQ(Bar(kHorizontalBarId).nPage, 500u);
}

TEST_F(ViewControls, MenuItemsSetTheirZooms) {
    std::map<int, std::pair<std::string, double>> expected = {{40018, {"Actual Pixels", 100}},
                                                              {40019, {"Fit in View\tCtrl+O", 10}}};
    for (int i = 0; i < 15; ++i) // the ladder down to 6.25 %
        expected[40003 + i] = {std::to_string(static_cast<int>(kZoomLadder[18 - i])) + "%",
                               kZoomLadder[18 - i]};
    ShowZoomMenu({7, 8}, TPM_BOTTOMALIGN | TPM_CENTERALIGN);
    const ZoomMenu asked = gZoomMenu;
    EXPECT_TRUE(asked.x == 7 && asked.y == 8 && asked.owner == window);
    constexpr UINT flags = TPM_BOTTOMALIGN | TPM_CENTERALIGN | TPM_RETURNCMD;
    EXPECT_EQ(asked.flags & flags, flags);
    EXPECT_EQ(asked.items.size(), expected.size() + 1);
    EXPECT_EQ(asked.separators, 3);
    EXPECT_EQ(gViewTools.view.zoom, 100.0) << "nothing was picked";
    for (const auto &[command, item] : expected) {
        EXPECT_EQ(asked.items.at(command), item.first);
        SetZoom(31.0);
        PickFromMenu(command);
        EXPECT_DOUBLE_EQ(gViewTools.view.zoom, item.second) << item.first;
    }
    EXPECT_EQ(Bar(kHorizontalBarId).nMax, 0); // it fits
    PickFromMenu(40012);
    ExpectZoomShown(" 66.67%", true, true);

    EXPECT_EQ(asked.items.at(40020), "Fit on Screen\tCtrl+0");
    PickFromMenu(40020);
    RECT placed = {}, work = {};
    GetWindowRect(window, &placed);
    SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
    EXPECT_TRUE(EqualRect(&placed, &work));
    EXPECT_DOUBLE_EQ(gViewTools.view.zoom, 10.0);
}

TEST_F(ViewControls, TheDisplaysContextMenuIsTheZoomMenu) {
    POINT point = {30, 40};
    ClientToScreen(display, &point);
    SetCursorPos(123, 234);
    gZoomMenu.command = 40009;
    SendMessageA(display, WM_CONTEXTMENU, 0, MAKELPARAM(50, 60));
    const ZoomMenu &asked = gZoomMenu;
    EXPECT_TRUE(asked.x == 50 && asked.y == 60 && (asked.flags & TPM_RIGHTALIGN));
    EXPECT_EQ(gViewTools.view.zoom, 300.0);
    SendMessageA(display, WM_KEYUP, VK_APPS, static_cast<LPARAM>(0xC0000001u));
    EXPECT_TRUE(asked.x == 123 && asked.y == 234) << "the menu key gives no position";
    SendMouse(display, WM_RBUTTONUP, {30, 40}); // through the class procedure
    EXPECT_TRUE(asked.x == point.x && asked.y == point.y);
}

TEST_F(ViewControls, BarsScrollTheView) {
    Scroll(kHorizontalBarId, SB_LEFT);
    const SCROLLINFO start = Bar(kHorizontalBarId);
    EXPECT_TRUE(start.nMin == 0 && start.nMax == 4000 && start.nPage == 400 && start.nPos == 0);
    const struct {
        int code, expected;
    } steps[] = {{SB_LINERIGHT, 1},    {SB_PAGERIGHT, 401}, {SB_LINELEFT, 400},   {SB_PAGELEFT, 0},
                 {SB_PAGELEFT, 0},     {SB_RIGHT, 3600},    {SB_LINERIGHT, 3600}, {SB_PAGELEFT, 3200},
                 {SB_ENDSCROLL, 3200}, {SB_LEFT, 0}};
    int position = 0;
    for (const auto &step : steps) {
        previewRequests = 0;
        Scroll(kHorizontalBarId, step.code);
        EXPECT_EQ(Bar(kHorizontalBarId).nPos, step.expected);
        EXPECT_EQ(View().centerX, step.expected + 200);
        EXPECT_EQ(previewRequests, step.expected != position);
        position = step.expected;
    }
    // A thumb position past 16 bits comes from the bar, not from the message.
    Close();
    Open({0, 0, 9000, 9000});
    SetZoom(1600.0);
    for (const int code : {SB_THUMBTRACK, SB_THUMBPOSITION}) {
        SCROLLINFO info = Bar(kVerticalBarId);
        info.nPos = 100001;
        info.fMask = SIF_POS;
        SetScrollInfo(GetDlgItem(window, kVerticalBarId), SB_CTL, &info, FALSE);
        Scroll(kVerticalBarId, code, 5);
        EXPECT_EQ(Bar(kVerticalBarId).nPos, 100001);
    }
    // Bars that are not the preview's, and those with nothing to scroll.
    EXPECT_FALSE(OnPreviewScroll(button, SB_LINERIGHT));
    EXPECT_FALSE(OnPreviewScroll(nullptr, SB_LINERIGHT));
    Close();
    Open({-5000, -3000, 4000, 6000});
    FitInView();
    EXPECT_DOUBLE_EQ(gViewTools.view.zoom, FitZoom(kDisplayWidth - 2, kDisplayHeight - 2, 9000, 9000));
    PumpMessages();
    previewRequests = 0;
    Scroll(kVerticalBarId, SB_BOTTOM);
    EXPECT_EQ(previewRequests, 0);
}

TEST_F(ViewControls, WithoutADialogNothingHappens) {
    Close();
    EXPECT_EQ(gFakePreview.stops, 1);
    SetZoom(200.0);
    SelectViewTool(kToolPan);
    FitInView();
    BeginComparison();
    EXPECT_FALSE(gPreviewDisplay.comparing);
    EXPECT_FALSE(CancelPreviewGesture());
    EXPECT_FALSE(OnPreviewWheel(MAKEWPARAM(0, 120), 0));
    OnPreviewDeactivated();
    OnPreviewModifierKey(VK_SPACE, true);
    EXPECT_FALSE(AttachPreviewDisplay(nullptr, {}, nullptr));
}

} // namespace
