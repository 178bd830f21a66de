// What the dialog withstands: messages that nobody of ours has sent.
#include "tests/dialog/DialogFixture.h"

#include "ui/window/DialogMessages.h"

namespace {

class DialogSafety : public DialogFixture {};

} // namespace

TEST_F(DialogSafety, MessagesFromOutsideNeitherCrippleNorEndIt) {
    HoldTable();
    RunDialog([this] {
        for (int way = 0; way < 2; ++way) {
            constexpr UINT messages[] = {
                WM_INITDIALOG,     WM_DESTROY,     WM_NCDESTROY, WM_WINDOWPOSCHANGED,  WM_GETMINMAXINFO,
                WM_NCCALCSIZE,     WM_DPICHANGED,  WM_SIZE,      WM_SETCURSOR,         WM_CTLCOLORSTATIC,
                WM_HSCROLL,        kMsgTableReady, kMsgProgress, kMsgParameterChanged, kMsgParametersReplaced,
                kMsgRequestPreview};
            for (const UINT message : messages)
                for (const WPARAM wParam : {WPARAM{0}, WPARAM{1}}) {
                    if (way == 0)
                        SendMessageW(dialog, message, wParam, 0);
                    else
                        PostMessageW(dialog, message, wParam, 0);
                }
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
    EXPECT_EQ(dialogResult, IDOK);
}
