// Opening and closing, many times: what the module and the process hold stays the same.
#include "tests/dialog/DialogFixture.h"

#include <cstdlib>

namespace {

class DialogLeaks : public DialogFixture {
protected:
    // A little of everything that makes objects.
    void Use(int round) {
        if (round % 4 == 0) {
            Settle();
            gAnswers.menuCommand = 40010;
            Click(kZoomArrow);
            gAnswers.menuCommand = 0;
            Click(kSettingsIcon);
            Click(kHelp);
            Resize(1000 + round % 7, 800);
            Click(kHideIcon);
            DragTrackbar(kPairs[0].trackbar, 80);
            RECT display;
            GetClientRect(Item(kDisplay), &display);
            Drag(kDisplay, {5, 5}, {display.right - 5, display.bottom - 5});
        } else if (round % 4 == 1) {
            const std::string path = UserFolder("Parameters") + "\\Set.sss";
            gAnswers.file.assign(path.begin(), path.end());
            gAnswers.menuCommand = 2;
            Click(kSettingsIcon);
            gAnswers.menuCommand = 0;
            Choose(kEffectCombo, round % 7);
            Pump(10);
        }
        Click(round % 2 == 0 ? IDOK : IDCANCEL);
    }
    void Cycle(int first, int last) {
        for (int round = first; round < last; ++round) {
            RunDialog([&] { Use(round); });
            host::CloseHost(filterHost);
        }
        EXPECT_EQ(Held(), (HeldObjects{0, 0, 0, 0})) << ::testing::PrintToString(LiveObjects());
    }
};

} // namespace

TEST_F(DialogLeaks, NothingIsLeftByOpeningAndClosing) {
    const int cycles = std::getenv("BRILLATRIX_TEST_LONG") ? 200 : 20;
    Cycle(0, 4);
    const long made = ObjectsMade();
    Cycle(4, 4 + cycles);
    EXPECT_GT(ObjectsMade() - made, 20 * cycles) << "the counting must see what is made";
}
