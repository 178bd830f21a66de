#include "plugin/record/HostRectangles.h"

#include "plugin/record/PluginState.h"

namespace {

HostRect32 ToHostRect32(const IntRect &r) {
    return {r.top, r.left, r.bottom, r.right};
}

// In 16-bit form every area lies inside the host's own 16-bit filter rectangle.
HostRect ToHostRect(const IntRect &r) {
    return {static_cast<int16_t>(r.top), static_cast<int16_t>(r.left), static_cast<int16_t>(r.bottom),
            static_cast<int16_t>(r.right)};
}

} // namespace

bool Uses32BitCoordinates() {
    const BigDocumentStruct *big = gFilterRecord->bigDocumentData;
    return big && big->PluginUsing32BitCoordinates != 0;
}

IntRect FilterArea() {
    if (Uses32BitCoordinates()) {
        const HostRect32 &r = gFilterRecord->bigDocumentData->filterRect32;
        return {r.left, r.top, r.right, r.bottom};
    }
    const HostRect r = gFilterRecord->filterRect;
    return {r.left, r.top, r.right, r.bottom};
}

void RequestInput(const IntRect &area) {
    if (Uses32BitCoordinates())
        gFilterRecord->bigDocumentData->inRect32 = ToHostRect32(area);
    else
        gFilterRecord->inRect = ToHostRect(area);
}

void RequestOutput(const IntRect &area) {
    if (Uses32BitCoordinates())
        gFilterRecord->bigDocumentData->outRect32 = ToHostRect32(area);
    else
        gFilterRecord->outRect = ToHostRect(area);
}

void RequestMask(const IntRect &area) {
    if (Uses32BitCoordinates())
        gFilterRecord->bigDocumentData->maskRect32 = ToHostRect32(area);
    else
        gFilterRecord->maskRect = ToHostRect(area);
}

void RequestNothing() {
    RequestInput(kEmptyRect);
    RequestOutput(kEmptyRect);
    RequestMask(kEmptyRect);
}

void RequestNothingInBothForms() {
    const HostRect none = ToHostRect(kEmptyRect);
    gFilterRecord->inRect = none;
    gFilterRecord->outRect = none;
    gFilterRecord->maskRect = none;
    if (BigDocumentStruct *big = gFilterRecord->bigDocumentData) {
        big->inRect32 = ToHostRect32(kEmptyRect);
        big->outRect32 = ToHostRect32(kEmptyRect);
        big->maskRect32 = ToHostRect32(kEmptyRect);
    }
}
