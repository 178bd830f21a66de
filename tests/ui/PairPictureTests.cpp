// What the pairs look like: the colours of each state, the highlight, the size of the digits.
#include "tests/support/SystemObjects.h"
#include "tests/support/WindowPicture.h"
#include "tests/ui/PairDialog.h"
#include "ui/fields/ParameterEditPaint.h"
#include "ui/fields/ParameterTable.h"

#include <algorithm>
#include <cstdint>
#include <richedit.h>

namespace {

const bool gObjectsAreCounted = CountOwnSystemObjects();

uint32_t PixelOfSystemColor(int index) {
    const COLORREF color = GetSysColor(index);
    return static_cast<uint32_t>(GetRValue(color) << 16 | GetGValue(color) << 8 | GetBValue(color));
}

// Of a field, in pixels of its client area.
struct Look {
    int highlighted, window, text; // pixels of the colours
    LONG highlightEnd;             // 0: none
};

class PairPictures : public PairTest {
protected:
    static Picture Capture() {
        RedrawWindow(dialog.window, nullptr, nullptr,
                     RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
        PumpMessages();
        return CaptureWindow(dialog.window);
    }
    static Look LookOf(const Picture &picture, int row) {
        RECT window, area;
        GetWindowRect(dialog.window, &window);
        GetClientRect(Edit(row), &area);
        MapWindowPoints(Edit(row), nullptr, reinterpret_cast<POINT *>(&area), 2);
        OffsetRect(&area, -window.left, -window.top);
        Look look = {};
        for (LONG y = area.top; y < area.bottom; ++y)
            for (LONG x = area.left; x < area.right; ++x) {
                const uint32_t pixel = PixelAt(picture, x, y);
                look.window += pixel == PixelOfSystemColor(COLOR_WINDOW);
                look.text += pixel == PixelOfSystemColor(COLOR_WINDOWTEXT);
                if (pixel != PixelOfSystemColor(COLOR_HIGHLIGHT))
                    continue;
                ++look.highlighted;
                look.highlightEnd = std::max(look.highlightEnd, x + 1 - area.left);
            }
        return look;
    }
};

// Text on the window colour, and the highlight in the field that has the focus and in no other.
TEST_F(PairPictures, OnlyTheFocusedFieldIsHighlighted) {
    for (int i = 0; i < kParameterControlCount; ++i) {
        FocusParameterControl(i);
        const Picture picture = Capture();
        for (int j = 0; j < kParameterControlCount; ++j) {
            SCOPED_TRACE(testing::Message() << i << " " << j);
            const Look look = LookOf(picture, j);
            if (i == j) {
                EXPECT_GT(look.highlighted, 50);
                continue;
            }
            EXPECT_EQ(look.highlighted, 0);
            EXPECT_GT(look.window, 500);
            EXPECT_GT(look.text, 5);
        }
    }
}

TEST_F(PairPictures, TheHighlightFitsTheTextAlsoWhileItIsTyped) {
    const ParameterControl &row = gParameterControls[3];
    FocusParameterControl(3);
    for (const char *typed : {"", "-", "7.2"}) {
        TypeText(row.edit, typed);
        const std::string text = EditText(3);
        const HDC dc = GetDC(row.edit);
        const HGDIOBJ old = SelectObject(dc, row.font);
        SIZE extent = {};
        GetTextExtentPoint32A(dc, text.c_str(), static_cast<int>(text.size()), &extent);
        SelectObject(dc, old);
        ReleaseDC(row.edit, dc);
        RECT format = {};
        SendMessageA(row.edit, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&format));
        EXPECT_EQ(LookOf(Capture(), 3).highlightEnd, format.left + extent.cx + 3) << text;
    }
    EXPECT_EQ(EditText(3), "-7.2");
}

// 8 of the 12 dialog units that a field has in the template, and in the middle of it, also at another scale.
TEST_F(PairPictures, DigitsAreAsHighAsTheDialogsText) {
    for (const int height : {20, 39}) {
        SetWindowPos(Edit(0), nullptr, 0, 0, 80, height, SWP_NOMOVE | SWP_NOZORDER);
        RenewParameterFont();
        LOGFONTW font = {};
        RECT format = {}, client = {};
        GetObjectW(gParameterControls[0].font, sizeof font, &font);
        SendMessageA(Edit(0), EM_GETRECT, 0, reinterpret_cast<LPARAM>(&format));
        GetClientRect(Edit(0), &client);
        EXPECT_EQ(font.lfHeight, MulDiv(height, 8, 12));
        EXPECT_EQ(format.bottom - format.top, font.lfHeight);
        EXPECT_NEAR(format.top, client.bottom - format.bottom, 1);
    }
    ClosePairDialog(&dialog);
}

TEST_F(PairPictures, PaintingGivesEverythingBackAndSurvivesFailures) {
    FocusParameterControl(2);
    const Picture expected = Capture();
    EXPECT_EQ(LiveDrawingObjects(), 1) << "the font that all the fields share";
    for (int n = 1; n <= 6; ++n) {
        FailSystemCall(kAnyDrawingCall, n, 0);
        RedrawWindow(dialog.window, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
        FailSystemCall(kAnyDrawingCall, 0, 0);
        EXPECT_EQ(LiveDrawingObjects(), 1) << n;
        EXPECT_EQ(CaptureWindow(dialog.window).pixels, expected.pixels) << n;
    }
    ClosePairDialog(&dialog);
    EXPECT_EQ(LiveDrawingObjects(), 0);
    FailSystemCall(kAnyDrawingCall, 1, 0);
    ASSERT_TRUE(OpenPairDialog(&dialog, kDefaultParameters)) << "the first font could not be made";
    FailSystemCall(kAnyDrawingCall, 0, 0);
    EXPECT_EQ(EditText(10), "30");
    ClosePairDialog(&dialog);
    EXPECT_EQ(LiveDrawingObjects(), 0);
}

} // namespace
