#include <windows.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <iterator>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

enum class ObjectKind { event, mutex, thread };

struct SystemObject {
    ObjectKind kind;
    std::mutex guard{}; // of the event's state
    bool isManual = false, isSet = false;
    std::recursive_timed_mutex mutex{};
    std::thread thread{};
    std::atomic<bool> hasEnded{false};
};

SystemObject *ObjectOf(HANDLE handle) {
    return static_cast<SystemObject *>(handle);
}

// Takes what there is to take at once.
bool TryTake(SystemObject *object) {
    if (object->kind == ObjectKind::thread)
        return object->hasEnded;
    const std::lock_guard lock(object->guard);
    const bool isSet = object->isSet;
    object->isSet = isSet && object->isManual;
    return isSet;
}

template <typename Condition> bool WaitUntil(Condition condition, DWORD milliseconds) {
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (!condition()) {
        if (milliseconds != INFINITE && Clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
    return true;
}

} // namespace

void (*gTakePostedMessage)(UINT message, WPARAM wParam, LPARAM lParam);

BOOL PostMessageA(HWND, UINT message, WPARAM wParam, LPARAM lParam) {
    if (gTakePostedMessage)
        gTakePostedMessage(message, wParam, lParam);
    return TRUE;
}

HANDLE CreateEventA(void *, BOOL isManual, BOOL isSet, const char *) {
    auto *event = new SystemObject{ObjectKind::event};
    event->isManual = isManual != FALSE;
    event->isSet = isSet != FALSE;
    return event;
}

HANDLE CreateMutexA(void *, BOOL isTaken, const char *) {
    auto *mutex = new SystemObject{ObjectKind::mutex};
    if (isTaken)
        mutex->mutex.lock();
    return mutex;
}

BOOL SetEvent(HANDLE event) {
    const std::lock_guard lock(ObjectOf(event)->guard);
    ObjectOf(event)->isSet = true;
    return TRUE;
}

BOOL ResetEvent(HANDLE event) {
    const std::lock_guard lock(ObjectOf(event)->guard);
    ObjectOf(event)->isSet = false;
    return TRUE;
}

BOOL ReleaseMutex(HANDLE mutex) {
    ObjectOf(mutex)->mutex.unlock();
    return TRUE;
}

BOOL CloseHandle(HANDLE handle) {
    SystemObject *object = ObjectOf(handle);
    if (object->thread.joinable())
        object->thread.join();
    delete object;
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    SystemObject *object = ObjectOf(handle);
    if (!object)
        return WAIT_FAILED;
    if (object->kind != ObjectKind::mutex)
        return WaitForMultipleObjects(1, &handle, FALSE, milliseconds);
    if (milliseconds == INFINITE)
        object->mutex.lock();
    else if (!object->mutex.try_lock_for(std::chrono::milliseconds(milliseconds)))
        return WAIT_TIMEOUT;
    return WAIT_OBJECT_0;
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE *handles, BOOL forAll, DWORD milliseconds) {
    DWORD taken = 0;
    const auto take = [&] {
        for (DWORD i = forAll ? taken : 0; i < count; ++i) {
            if (TryTake(ObjectOf(handles[i]))) {
                taken = forAll ? i + 1 : i;
                if (!forAll)
                    return true;
            } else if (forAll) {
                return false;
            }
        }
        return forAll != FALSE;
    };
    if (std::find(handles, handles + count, nullptr) != handles + count)
        return WAIT_FAILED;
    return WaitUntil(take, milliseconds) ? WAIT_OBJECT_0 + (forAll ? 0 : taken) : WAIT_TIMEOUT;
}

uintptr_t _beginthreadex(void *, unsigned, unsigned (*start)(void *), void *argument, unsigned, unsigned *) {
    auto *thread = new SystemObject{ObjectKind::thread};
    thread->thread = std::thread([=] {
        start(argument);
        thread->hasEnded = true;
    });
    return reinterpret_cast<uintptr_t>(thread);
}

DWORD GetLastError() {
    return 0;
}

DWORD GetTickCount() {
    const auto now = Clock::now().time_since_epoch();
    return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

void GetSystemInfo(SYSTEM_INFO *info) {
    info->dwNumberOfProcessors = std::max(std::thread::hardware_concurrency(), 1u);
}

using Rects = std::vector<RECT>;

struct NativeRegion {
    Rects rects;
};

namespace {

// The x ranges of a region in the row y, as in its rectangles.
bool Holds(const Rects &rects, LONG x, LONG y) {
    return std::any_of(rects.begin(), rects.end(), [x, y](const RECT &r) {
        return x >= r.left && x < r.right && y >= r.top && y < r.bottom;
    });
}

bool IsKept(bool inA, bool inB, int mode) {
    return mode == RGN_AND ? inA && inB : mode == RGN_OR ? inA || inB : inA && !inB;
}

// One row of rectangles; it continues the one before when that is alike.
void AddRow(const Rects &row, Rects *all) {
    const size_t before = all->size() - std::min(all->size(), row.size());
    const bool isAlike = all->size() >= row.size() && !row.empty() &&
                         std::equal(row.begin(), row.end(), all->begin() + static_cast<ptrdiff_t>(before),
                                    [](const RECT &r, const RECT &b) {
                                        return r.left == b.left && r.right == b.right && r.top == b.bottom;
                                    }) &&
                         (before == 0 || (*all)[before - 1].bottom < row[0].top);
    if (!isAlike)
        all->insert(all->end(), row.begin(), row.end());
    for (size_t i = before; isAlike && i < all->size(); ++i)
        (*all)[i].bottom = row[0].bottom;
}

Rects Combine(const Rects &a, const Rects &b, int mode) {
    Rects result;
    std::set<LONG> ys;
    for (const Rects *rects : {&a, &b})
        for (const RECT &r : *rects)
            ys.insert({r.top, r.bottom});
    for (auto y = ys.begin(); y != ys.end() && std::next(y) != ys.end(); ++y) {
        Rects nearA, nearB, row;
        std::set<LONG> xs;
        const auto isNear = [y](const RECT &r) { return r.top <= *y && r.bottom > *y; };
        std::copy_if(a.begin(), a.end(), std::back_inserter(nearA), isNear);
        std::copy_if(b.begin(), b.end(), std::back_inserter(nearB), isNear);
        for (const Rects *rects : {&nearA, &nearB})
            for (const RECT &r : *rects)
                xs.insert({r.left, r.right});
        for (auto x = xs.begin(); x != xs.end() && std::next(x) != xs.end(); ++x) {
            if (!IsKept(Holds(nearA, *x, *y), Holds(nearB, *x, *y), mode))
                continue;
            if (!row.empty() && row.back().right == *x)
                row.back().right = *std::next(x);
            else
                row.push_back({*x, *y, *std::next(x), *std::next(y)});
        }
        AddRow(row, &result);
    }
    return result;
}

} // namespace

HRGN CreateRectRgn(int left, int top, int right, int bottom) {
    auto *region = new NativeRegion;
    SetRectRgn(region, left, top, right, bottom);
    return region;
}

BOOL SetRectRgn(HRGN region, int left, int top, int right, int bottom) {
    region->rects.clear();
    if (left < right && top < bottom)
        region->rects = {{left, top, right, bottom}};
    return TRUE;
}

int CombineRgn(HRGN region, HRGN a, HRGN b, int mode) {
    if (!a || !b)
        return ERROR;
    region->rects = Combine(a->rects, b->rects, mode);
    RECT box;
    return GetRgnBox(region, &box);
}

int GetRgnBox(HRGN region, RECT *box) {
    *box = {};
    for (const RECT &rect : region->rects)
        UnionRect(box, box, &rect);
    return region->rects.empty() ? NULLREGION : region->rects.size() == 1 ? SIMPLEREGION : COMPLEXREGION;
}

DWORD GetRegionData(HRGN region, DWORD bytes, RGNDATA *data) {
    const size_t size = region->rects.size() * sizeof(RECT);
    const auto needed = static_cast<DWORD>(offsetof(RGNDATA, Buffer) + size);
    if (!data || bytes < needed)
        return data ? 0 : needed;
    data->rdh = {sizeof data->rdh, 1, static_cast<DWORD>(region->rects.size()), static_cast<DWORD>(size), {}};
    if (size > 0)
        std::memcpy(data->Buffer, region->rects.data(), size);
    return needed;
}

HRGN ExtCreateRegion(const void *, DWORD, const RGNDATA *data) {
    HRGN region = CreateRectRgn(0, 0, 0, 0);
    const auto *rects = reinterpret_cast<const RECT *>(data->Buffer);
    for (DWORD i = 0; i < data->rdh.nCount; ++i)
        region->rects = Combine(region->rects, {rects[i]}, RGN_OR);
    return region;
}

BOOL DeleteObject(HGDIOBJ region) {
    delete static_cast<HRGN>(region);
    return TRUE;
}

BOOL UnionRect(RECT *to, const RECT *a, const RECT *b) {
    const RECT first = *a, second = *b;
    if (first.left >= first.right || first.top >= first.bottom)
        *to = second;
    else if (second.left < second.right && second.top < second.bottom)
        *to = {std::min(first.left, second.left), std::min(first.top, second.top),
               std::max(first.right, second.right), std::max(first.bottom, second.bottom)};
    return TRUE;
}
