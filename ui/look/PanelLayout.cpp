#include "ui/look/PanelLayout.h"

#include "resources/DialogControlIds.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr Follows kFollows[] = {
    // Above the preview, in the left corner.
    {kProductLogoId, kNear, kNear, kNear, kNear},
    {kPanIconId, kNear, kNear, kNear, kNear},
    {kPanLabelId, kNear, kNear, kNear, kNear},
    {kZoomIconId, kNear, kNear, kNear, kNear},
    {kZoomLabelId, kNear, kNear, kNear, kNear},
    {kHideIconId, kNear, kNear, kNear, kNear},
    {kHideLabelId, kNear, kNear, kNear, kNear},
    {kShowIconId, kNear, kNear, kNear, kNear},
    {kShowLabelId, kNear, kNear, kNear, kNear},
    // The preview takes all the room that the panel leaves.
    {kPreviewFrameId, kNear, kNear, kPanel, kFar},
    {kPreviewDisplayId, kNear, kNear, kPanel, kFar},
    {kHorizontalBarId, kNear, kFar, kPanel, kFar},
    {kVerticalBarId, kPanel, kNear, kPanel, kFar},
    // Below the preview.
    {kZoomOutButtonId, kNear, kFar, kNear, kFar},
    {kZoomTextId, kNear, kFar, kNear, kFar},
    {kZoomArrowId, kNear, kFar, kNear, kFar},
    {kZoomInButtonId, kNear, kFar, kNear, kFar},
    {kProgressId, kNear, kFar, kPanel, kFar},
    {kStateLineId, kNear, kFar, kPanel, kFar},
    // The panel, whose frame goes down as far as the preview does.
    {kSettingsPanelId, kPanel, kNear, kFar, kFar},
    {kSettingsComboId, kPanel, kRowTop, kFar, kRowTop},
    {kSettingsMenuIconControlId, kFar, kRowTop, kFar, kRowTop},
    {kEffectComboId, kPanel, kRowTop, kFar, kRowTop},
    {kSpikesGroupId, kPanel, kRowTop, kFar, kRowTop},
    {kColorGroupId, kPanel, kRowTop, kFar, kRowTop},
    {kSecondaryGroupId, kPanel, kRowTop, kFar, kRowTop},
    // The bottom line.
    {kMakerLogoId, kNear, kFar, kNear, kFar},
    {kUpdateLinkId, kNear, kFar, kNear, kFar},
    {kPreviewOnId, kPanel, kFar, kPanel, kFar},
    {kCompareId, kPanel, kFar, kPanel, kFar},
    {kHelpId, kPanel, kFar, kPanel, kFar},
    {IDOK, kFar, kFar, kFar, kFar},
    {IDCANCEL, kFar, kFar, kFar, kFar},
    {kCornerIconId, kFar, kFar, kFar, kFar},
};

constexpr Follows kFieldFollows = {0, kBarEnd, kRowPart, kFar, kRowPart},
                  kTrackbarFollows = {0, kPanel, kRowPart, kBarEnd, kRowPart},
                  kLessFollows = {0, kPanel, kRowPart, kPanel, kRowPart},
                  kMoreFollows = {0, kBarEnd, kRowPart, kBarEnd, kRowPart},
                  kTextFollows = {0, kPanel, kRowTop, kPanel, kRowTop};

// Dialog units. The parameters stand in rows of one height, each with its name above its trackbar.
constexpr int kRowTops[] = {72, 98, 124, 150, 176, 202, 243, 269, 295, 336, 362};
constexpr int kRowCount = std::size(kRowTops), kRowUnits = 26;
constexpr int kNameUnits = 8;                      // height of a name
constexpr int kPictureUnits = 16;                  // height of the pictures beside the trackbar
constexpr int kNameIndent = 16, kNameOutdent = 45; // clear the pictures when those stand beside it
constexpr int kNameRoom = 6;                       // that the panel takes for it then
constexpr int kMostTightened = 5;                  // of a row
constexpr int kMostSpread = 9;                     // of a row
constexpr int kPanelComfort = 110;                 // that the panel may have more than in the template
constexpr int kPanelShare = 3, kFieldPart = 9;     // a third of the window's gain, and a ninth of that

// Rows that end at that height or above.
int RowsAbove(int units) {
    return static_cast<int>(std::count_if(std::begin(kRowTops), std::end(kRowTops),
                                          [units](int top) { return top + kRowUnits <= units; }));
}

// Null when it is part of no row.
const int *RowOf(const RECT &rect) {
    const auto row = std::find_if(std::begin(kRowTops), std::end(kRowTops),
                                  [&](int top) { return rect.top >= top && rect.bottom <= top + kRowUnits; });
    return row == std::end(kRowTops) ? nullptr : row;
}

int Across(int units, Side side, const Gains &gains, const Units &pixels) {
    const int at = ToPixels(units, pixels.across);
    switch (side) {
    case kPanel:
        return at + gains.across - gains.panel;
    case kBarEnd:
        return at + gains.across - gains.field;
    case kFar:
        return at + gains.across;
    default:
        return at;
    }
}

int Down(int units, Side side, const Gains &gains, const Units &pixels) {
    const int at = ToPixels(units, pixels.down);
    if (side == kFar)
        return at + gains.down;
    return side == kNear ? at : at + MulDiv(gains.rows, RowsAbove(units), kRowCount);
}

// In a tightened row all moves up: the pictures beside the name, the rest as near to it as its height allows.
void Tighten(const RECT &units, const Follows &follows, const Gains &gains, const Units &pixels, RECT *rect) {
    const int taken = -gains.rows / kRowCount;
    const int *row = RowOf(units);
    if (taken <= 0 || !row)
        return;
    if (follows.top == kRowPart) {
        const bool isPicture = units.bottom - units.top >= kPictureUnits;
        const int nameEnd = Down(*row + kNameUnits, kRowTop, gains, pixels);
        const int most =
            isPicture ? ToPixels(kMostTightened, pixels.down) : static_cast<int>(rect->top) - nameEnd;
        OffsetRect(rect, 0, -std::min(taken + ToPixels(1, pixels.down) / 2, most));
        const int rowEnd = Down(*row + kRowUnits, kRowTop, gains, pixels);
        rect->bottom = std::min(rect->bottom, LONG{rowEnd}); // the rounding of pixels
    } else if (units.bottom - units.top <= kNameUnits) {
        rect->left += ToPixels(kNameIndent, pixels.across);
        rect->right = Across(static_cast<int>(units.right) - kNameOutdent, kBarEnd, gains, pixels);
    }
}

} // namespace

Follows FollowsOf(int controlId) {
    for (const Follows &row : kFollows)
        if (row.controlId == controlId)
            return row;
    for (const PairIds &pair : kPairIds) {
        if (controlId == pair.edit)
            return kFieldFollows;
        if (controlId == pair.trackbar)
            return kTrackbarFollows;
        if (controlId == pair.less)
            return kLessFollows;
        if (controlId == pair.more)
            return kMoreFollows;
    }
    return kTextFollows;
}

Gains ShareGains(SIZE gained, const Units &pixels) {
    Gains gains = {static_cast<int>(gained.cx), static_cast<int>(gained.cy), 0, 0, 0};
    gains.rows = std::clamp(gains.down, -SparePixels(pixels), kRowCount * ToPixels(kMostSpread, pixels.down));
    const int least = gains.rows < 0 ? ToPixels(kNameRoom, pixels.across) : 0;
    gains.panel = std::clamp(gains.across / kPanelShare, least, ToPixels(kPanelComfort, pixels.across));
    gains.field = gains.panel / kFieldPart;
    return gains;
}

RECT PlaceInPixels(const RECT &units, const Follows &follows, const Gains &gains, const Units &pixels) {
    RECT rect = {Across(units.left, follows.left, gains, pixels), Down(units.top, follows.top, gains, pixels),
                 Across(units.right, follows.right, gains, pixels),
                 Down(units.bottom, follows.bottom, gains, pixels)};
    Tighten(units, follows, gains, pixels, &rect);
    return rect;
}

int SparePixels(const Units &pixels) {
    return kRowCount * ToPixels(kMostTightened, pixels.down);
}
