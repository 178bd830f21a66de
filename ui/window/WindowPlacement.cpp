#include "ui/window/WindowPlacement.h"

#include <algorithm>
#include <climits>
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

RECT GrownBy(const RECT &rect, const RECT &frame) {
    const auto sum = [](LONG a, int64_t b) {
        return static_cast<LONG>(std::clamp<int64_t>(a + b, LONG_MIN, LONG_MAX));
    };
    return {sum(rect.left, -int64_t{frame.left}), sum(rect.top, -int64_t{frame.top}),
            sum(rect.right, frame.right), sum(rect.bottom, frame.bottom)};
}

RECT PlaceOnMonitor(const RECT &rect, const RECT &invisibleFrame) {
    const RECT &f = invisibleFrame;
    const RECT wanted = GrownBy(rect, {-f.left, -f.top, -f.right, -f.bottom});
    const int64_t captionBottom = int64_t{wanted.top} + GetSystemMetrics(SM_CYCAPTION);
    const RECT caption = {wanted.left, wanted.top, wanted.right,
                          static_cast<LONG>(std::min<int64_t>(captionBottom, wanted.bottom))};
    const HMONITOR reachable = MonitorFromRect(&caption, MONITOR_DEFAULTTONULL);
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof monitor;
    if (!GetMonitorInfoA(reachable ? reachable : MonitorFromRect(&wanted, MONITOR_DEFAULTTONEAREST),
                         &monitor))
        return rect;
    return reachable && HasRoomIn(wanted, monitor.rcWork) ? rect
                                                          : GrownBy(MoveIntoArea(wanted, monitor.rcWork), f);
}
