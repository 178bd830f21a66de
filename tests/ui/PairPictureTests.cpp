// What the pairs look like: the colours of each state, and pictures to look at, left beside the test program.
#include "tests/support/WindowPicture.h"
#include "tests/support/SystemObjects.h"
#include "tests/ui/PairDialog.h"

#include <gtest/gtest.h>

#include <richedit.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

const bool gObjectsAreCounted = CountOwnSystemObjects();

uint32_t PixelOfSystemColor(int index) {
    const COLORREF color = GetSysColor(index);
    return static_cast<uint32_t>(GetRValue(color) << 16 | GetGValue(color) << 8 | GetBValue(color));
}

int CountPixels(const Picture &picture, const RECT &area, uint32_t color) {
    int count = 0;
    for (LONG y = area.top; y < area.bottom; ++y)
        for (LONG x = area.left; x < area.right; ++x)
            count += (picture.pixels[static_cast<size_t>(y) * picture.width + x] & 0xFFFFFF) == color;
    return count;
}

// A child's client area in the pixels of its dialog's picture.
RECT AreaInPicture(HWND dialog, HWND child) {
    RECT window, area;
    GetWindowRect(dialog, &window);
    GetClientRect(child, &area);
    MapWindowPoints(child, nullptr, reinterpret_cast<POINT *>(&area), 2);
    OffsetRect(&area, -window.left, -window.top);
    return area;
}

void CopyRows(const Picture &from, LONG top, LONG bottom, Picture *to) {
    const size_t first = static_cast<size_t>(top) * from.width,
                 last = static_cast<size_t>(bottom) * from.width;
    std::copy(from.pixels.begin() + first, from.pixels.begin() + last, to->pixels.begin() + first);
}

class PairPictures : public testing::TestWithParam<const char *> {
protected:
    static PairDialog dialog;

    void SetUp() override {
        if (dialog.window)
            ResetPairDialog(&dialog, kDefaultParameters);
        else
            ASSERT_TRUE(OpenPairDialog(&dialog, GetParam(), kDefaultParameters));
    }
    static void TearDownTestSuite() { ClosePairDialog(&dialog); }

    Picture Capture() {
        RedrawWindow(dialog.window, nullptr, nullptr,
                     RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
        PumpMessages();
        return CaptureWindow(dialog.window);
    }
    std::string PathOf(const char *state) {
        return std::string("pairs-") + GetParam() + "-" + state + ".bmp";
    }
};

PairDialog PairPictures::dialog;

INSTANTIATE_TEST_SUITE_P(RichEdit2, PairPictures, testing::Values("RichEdit20A"));
INSTANTIATE_TEST_SUITE_P(RichEdit5, PairPictures, testing::Values("RICHEDIT50W"));

// Text on the window colour, and the highlight in the field that has the focus and in no other.
TEST_P(PairPictures, OnlyTheFocusedFieldIsHighlighted) {
    Picture all = Capture();
    WriteBmp(all, PathOf("normal"));
    for (int i = 0; i < kParameterControlCount; ++i) {
        FocusParameterControl(i);
        const Picture picture = Capture();
        for (int j = 0; j < kParameterControlCount; ++j) {
            SCOPED_TRACE(testing::Message() << i << " " << j);
            const RECT area = AreaInPicture(dialog.window, gParameterControls[j].edit);
            const int highlighted = CountPixels(picture, area, PixelOfSystemColor(COLOR_HIGHLIGHT));
            if (i == j) {
                EXPECT_GT(highlighted, 50);
                CopyRows(picture, area.top - 4, area.bottom + 4, &all);
                continue;
            }
            EXPECT_EQ(highlighted, 0);
            EXPECT_GT(CountPixels(picture, area, PixelOfSystemColor(COLOR_WINDOW)), 500);
            EXPECT_GT(CountPixels(picture, area, PixelOfSystemColor(COLOR_WINDOWTEXT)), 5);
        }
    }
    WriteBmp(all, PathOf("focus"));
}

// Where the highlight of a field ends, from the field's left edge; 0 without one.
LONG HighlightEnd(const Picture &picture, const RECT &area) {
    LONG end = 0;
    for (LONG x = area.left; x < area.right; ++x)
        if (CountPixels(picture, {x, area.top, x + 1, area.bottom}, PixelOfSystemColor(COLOR_HIGHLIGHT)) > 0)
            end = x + 1 - area.left;
    return end;
}

LONG ExpectedHighlightEnd(const ParameterControl &row, const std::string &text) {
    const HDC dc = GetDC(row.edit);
    const HGDIOBJ old = SelectObject(dc, row.font);
    SIZE extent = {};
    GetTextExtentPoint32A(dc, text.c_str(), static_cast<int>(text.size()), &extent);
    SelectObject(dc, old);
    ReleaseDC(row.edit, dc);
    RECT format = {};
    SendMessageA(row.edit, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&format));
    return format.left + extent.cx + 3;
}

TEST_P(PairPictures, TheHighlightFitsTheTextAlsoWhileItIsTyped) {
    const ParameterControl &row = gParameterControls[3];
    FocusParameterControl(3);
    EXPECT_EQ(HighlightEnd(Capture(), AreaInPicture(dialog.window, row.edit)),
              ExpectedHighlightEnd(row, "15.0"));
    TypeText(row.edit, "-");
    EXPECT_EQ(HighlightEnd(Capture(), AreaInPicture(dialog.window, row.edit)),
              ExpectedHighlightEnd(row, "-"));
    TypeText(row.edit, "7.2");
    const Picture picture = Capture();
    WriteBmp(picture, PathOf("typed"));
    EXPECT_EQ(HighlightEnd(picture, AreaInPicture(dialog.window, row.edit)),
              ExpectedHighlightEnd(row, "-7.2"));
}

TEST_P(PairPictures, PaintingGivesEverythingBackAndSurvivesFailures) {
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
    ASSERT_TRUE(OpenPairDialog(&dialog, GetParam(), kDefaultParameters))
        << "the first font could not be made";
    FailSystemCall(kAnyDrawingCall, 0, 0);
    EXPECT_EQ(EditText(10), "30");
    ClosePairDialog(&dialog);
    EXPECT_EQ(LiveDrawingObjects(), 0);
}

} // namespace
