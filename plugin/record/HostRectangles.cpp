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

IntRect ShortFilterArea() {
    const HostRect r = gFilterRecord->filterRect;
    return {r.left, r.top, r.right, r.bottom};
}

IntRect LongFilterArea() {
    const HostRect32 &r = gFilterRecord->bigDocumentData->filterRect32;
    return {r.left, r.top, r.right, r.bottom};
}

// Hosts hand out a big-document record that they have not filled in. Which of the two forms they read is
// anyone's guess, so they are asked in both.
bool IsLongAreaMissing() {
    return IsEmptyRect(LongFilterArea()) && !IsEmptyRect(ShortFilterArea());
}

// `shortRect` and `longRect` are the same request in the two forms.
void Request(const IntRect &area, HostRect FilterRecord::*shortRect,
             HostRect32 BigDocumentStruct::*longRect) {
    const bool usesLong = Uses32BitCoordinates();
    if (usesLong)
        gFilterRecord->bigDocumentData->*longRect = ToHostRect32(area);
    if (!usesLong || IsLongAreaMissing())
        gFilterRecord->*shortRect = ToHostRect(area);
}

} // namespace

bool Uses32BitCoordinates() {
    const BigDocumentStruct *big = gFilterRecord->bigDocumentData;
    return big && big->PluginUsing32BitCoordinates != 0;
}

IntRect FilterArea() {
    return Uses32BitCoordinates() && !IsLongAreaMissing() ? LongFilterArea() : ShortFilterArea();
}

void RequestInput(const IntRect &area) {
    Request(area, &FilterRecord::inRect, &BigDocumentStruct::inRect32);
}

void RequestOutput(const IntRect &area) {
    Request(area, &FilterRecord::outRect, &BigDocumentStruct::outRect32);
}

void RequestMask(const IntRect &area) {
    Request(area, &FilterRecord::maskRect, &BigDocumentStruct::maskRect32);
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
