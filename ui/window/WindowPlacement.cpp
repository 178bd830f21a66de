#include "ui/window/WindowPlacement.h"

#include <algorithm>
#include <cstdint>

namespace {

struct Span {
    LONG first, last;
};

// In 64 bits: a rectangle out of a file may be wider than a LONG can say.
Span MoveIntoSpan(Span span, Span area) {
    const int64_t room = int64_t{area.last} - area.first;
    const int64_t length = std::clamp<int64_t>(int64_t{span.last} - span.first, 0, room);
    const int64_t first = std::clamp<int64_t>(span.first, area.first, area.last - length);
    return {static_cast<LONG>(first), static_cast<LONG>(first + length)};
}

bool HasRoomIn(const RECT &rect, const RECT &area) {
    return int64_t{rect.right} - rect.left <= area.right - area.left &&
           int64_t{rect.bottom} - rect.top <= area.bottom - area.top;
}

} // namespace

RECT MoveIntoArea(const RECT &rect, const RECT &area) {
    const Span across = MoveIntoSpan({rect.left, rect.right}, {area.left, area.right});
    const Span down = MoveIntoSpan({rect.top, rect.bottom}, {area.top, area.bottom});
    return {across.first, down.first, across.last, down.last};
}

RECT PlaceOnMonitor(const RECT &wanted) {
    const int64_t captionBottom = int64_t{wanted.top} + GetSystemMetrics(SM_CYCAPTION);
    const RECT caption = {wanted.left, wanted.top, wanted.right,
                          static_cast<LONG>(std::min<int64_t>(captionBottom, wanted.bottom))};
    const HMONITOR reachable = MonitorFromRect(&caption, MONITOR_DEFAULTTONULL);
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof monitor;
    if (!GetMonitorInfoA(reachable ? reachable : MonitorFromRect(&wanted, MONITOR_DEFAULTTONEAREST),
                         &monitor))
        return wanted;
    return reachable && HasRoomIn(wanted, monitor.rcWork) ? wanted : MoveIntoArea(wanted, monitor.rcWork);
}
