#include "ui/display/PreviewComparison.h"

#include "ui/display/PreviewDisplayState.h"

namespace {

void Compare(bool comparing) {
    if (!gPreviewDisplay.window || gPreviewDisplay.comparing == comparing)
        return;
    gPreviewDisplay.comparing = comparing;
    InvalidateRect(gPreviewDisplay.window, nullptr, FALSE);
    UpdateWindow(gPreviewDisplay.window);
}

} // namespace

void BeginComparison() {
    Compare(true);
}

void EndComparison() {
    Compare(false);
}
