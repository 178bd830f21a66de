// What the dialog withstands: messages that nobody of ours has sent.
#include "tests/dialog/DialogFixture.h"

#include "resources/DialogControlIds.h"
#include "ui/window/DialogMessages.h"

namespace {

class DialogSafety : public DialogFixture {};

} // namespace

TEST_F(DialogSafety, MessagesFromOutsideNeitherCrippleNorEndIt) {
    HoldTable();
    RunDialog([this] {
        for (int way = 0; way < 2; ++way) {
            constexpr UINT messages[] = {
                kMsgParametersReplaced, WM_HSCROLL,        WM_SIZE,       WM_DRAWITEM,    WM_DESTROY,
                WM_INITDIALOG,          WM_GETMINMAXINFO,  WM_DPICHANGED, WM_NCCALCSIZE,  WM_CTLCOLORSTATIC,
                kMsgParameterChanged,   kMsgProgress,      WM_NCDESTROY,  kMsgTableReady, WM_SETCURSOR,
                WM_WINDOWPOSCHANGED,    kMsgRequestPreview};
            const auto give = [way](HWND window, UINT message, WPARAM wParam) {
                way == 0 ? SendMessageW(window, message, wParam, 0)
                         : PostMessageW(window, message, wParam, 0);
            };
            for (const UINT message : messages)
                for (const WPARAM wParam : {WPARAM{0}, WPARAM{1}})
                    give(dialog, message, wParam);
            for (const int control : {kPreviewDisplayId, kPairs[2].edit, kPairs[2].trackbar})
                for (const UINT message : {WM_DESTROY, WM_NCDESTROY})
                    give(Item(control), message, 0);
            Pump();
            EXPECT_FALSE(IsWindowEnabled(Item(kHideIcon))) << "the table is not ready";
        }
        ReleaseTable();
        WaitFor("the effect tools", [this] { return IsWindowEnabled(Item(kHideIcon)); });
        Key('I'); // the keys, the fields and the preview are all there
        Character('7');
        Settle();
        EXPECT_EQ(SetInHandle().intensity, 7);
        EXPECT_NE(TooltipOf(dialog, Item(IDOK)), "");
        PressOk();
    });
}
