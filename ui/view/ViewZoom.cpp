#include "ui/view/ViewZoom.h"

#include "diag/ErrorReport.h"
#include "resources/ResourceIds.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr uint32_t kSiteInvalidSelector = 1365;

} // namespace

const double kZoomLadder[kZoomStepCount] = {
    0.3,   0.5,   1.0,   2.5,   6.25,  12.5,  25.0,   33.33,  50.0,   66.67,
    100.0, 200.0, 300.0, 400.0, 600.0, 800.0, 1000.0, 1200.0, 1600.0,
};

const ZoomMenuItem kZoomMenuItems[kZoomMenuItemCount] = {
    {BX_ZOOM_TO_6, 6.25},      {BX_ZOOM_TO_12, 12.5},
    {BX_ZOOM_TO_25, 25.0},     {BX_ZOOM_TO_33, 33.33},
    {BX_ZOOM_TO_50, 50.0},     {BX_ZOOM_TO_66, 66.67},
    {BX_ZOOM_TO_100, 100.0},   {BX_ZOOM_TO_200, 200.0},
    {BX_ZOOM_TO_300, 300.0},   {BX_ZOOM_TO_400, 400.0},
    {BX_ZOOM_TO_600, 600.0},   {BX_ZOOM_TO_800, 800.0},
    {BX_ZOOM_TO_1000, 1000.0}, {BX_ZOOM_TO_1200, 1200.0},
    {BX_ZOOM_TO_1600, 1600.0}, {BX_ZOOM_ACTUAL_PIXELS, kActualPixelsZoom},
};

double ClampZoom(double zoom) {
    if (std::isnan(zoom))
        return kInitialZoom;
    return std::clamp(zoom, kMinimumZoom, kMaximumZoom);
}

double LookUpZoom(ZoomSelector selector, double zoom) {
    const double *end = kZoomLadder + kZoomStepCount;
    switch (selector) {
    case kZoomStepIn: {
        const double *next = std::upper_bound(kZoomLadder, end, zoom);
        return next == end ? kMaximumZoom : *next;
    }
    case kZoomStepOut: {
        const double *notBelow = std::lower_bound(kZoomLadder, end, zoom);
        return notBelow == kZoomLadder ? kMinimumZoom : notBelow[-1];
    }
    case kZoomActualPixels:
        return kActualPixelsZoom;
    }
    ReportError({kSiteInvalidSelector, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "Invalid Selector specified.");
    return zoom;
}

double FitZoom(int32_t areaWidth, int32_t areaHeight, int32_t imageWidth, int32_t imageHeight) {
    if (areaWidth <= 0 || areaHeight <= 0 || imageWidth <= 0 || imageHeight <= 0)
        return kInitialZoom;
    const double width = areaWidth, height = areaHeight;
    const bool widthBound = height / imageHeight >= width / imageWidth;
    return ClampZoom(widthBound ? width * 100.0 / imageWidth : height * 100.0 / imageHeight);
}

bool ZoomOfMenuCommand(uint32_t command, double *zoom) {
    for (const ZoomMenuItem &item : kZoomMenuItems)
        if (item.command == command) {
            *zoom = item.zoom;
            return true;
        }
    return false;
}

bool FormatZoomText(double zoom, char *text, size_t capacity) {
    const int length = snprintf(text, capacity, " %-3.2Lf%%", static_cast<long double>(zoom));
    if (length >= 0 && static_cast<size_t>(length) < capacity)
        return true;
    if (capacity > 0)
        *text = '\0';
    return false;
}
