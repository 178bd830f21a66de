// Opening and closing, many times: what the module and the process hold stays the same.
#include "tests/dialog/DialogFixture.h"

#include <cstdlib>
#include <ostream>
#include <tlhelp32.h>

namespace {

struct Holdings {
    HeldObjects held;
    std::map<std::string, int> objects;
    int threads; // of the whole process
    bool operator==(const Holdings &) const = default;
};

void PrintTo(const Holdings &h, std::ostream *stream) {
    *stream << h.held.heapBlocks << " blocks, " << h.held.objects << " objects, " << h.held.comInitializations
            << " COM, " << h.held.sections << " sections, " << h.threads << " threads";
    for (const auto &[call, count] : h.objects)
        *stream << ", " << call << ' ' << count;
}

int ProcessThreads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId();
    CloseHandle(snapshot);
    return count;
}

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
    Holdings AfterCycles(int first, int last) {
        for (int round = first; round < last; ++round) {
            RunDialog([&] { Use(round); });
            host::CloseHost(filterHost);
        }
        return {Held(), LiveObjects(), ProcessThreads()};
    }
};

} // namespace

TEST_F(DialogLeaks, NothingIsLeftByOpeningAndClosing) {
    const int cycles = std::getenv("BRILLATRIX_TEST_LONG") ? 200 : 20;
    const Holdings first = AfterCycles(0, 4);
    const long made = ObjectsMade();
    EXPECT_EQ(AfterCycles(4, 4 + cycles), first);
    EXPECT_GT(ObjectsMade() - made, 20 * cycles) << "the counting must see what is made";
    EXPECT_EQ(first.held, (HeldObjects{0, 0, 0, 0}));
    EXPECT_TRUE(first.objects.empty()) << ::testing::PrintToString(first);
    std::printf("%d cycles, %ld objects made: %s\n", cycles, ObjectsMade() - made,
                ::testing::PrintToString(first).c_str());
}
