// A small filter to test the host with: it inverts the image tile by tile. The environment variable
// INVERT_FILTER makes it do something else: "box", "ask", "crash", "batch", "slow", "fail", "report",
// "norecord", or the same with other services of the host: "twice", "late", "remember",
// "services".
#include "tests/host/InvertServices.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr HostResult kFailure = -36;
constexpr DWORD kSlowTile = 250; // milliseconds

std::string Order() {
    char text[32] = {};
    GetEnvironmentVariableA("INVERT_FILTER", text, sizeof(text));
    return text;
}

} // namespace

int32_t Planes(const FilterRecord &record) {
    const int32_t reported = record.outLayerPlanes + record.outTransparencyMask + record.outNonLayerPlanes;
    return reported > 0 ? reported : record.planes;
}

template <typename Sample> static void InvertRow(const char *from, char *to, int32_t count, Sample white) {
    for (int32_t i = 0; i < count; i++) {
        Sample sample;
        std::memcpy(&sample, from + static_cast<size_t>(i) * sizeof(Sample), sizeof(Sample));
        sample = static_cast<Sample>(white - sample);
        std::memcpy(to + static_cast<size_t>(i) * sizeof(Sample), &sample, sizeof(Sample));
    }
}

void InvertBuffers(const FilterRecord &record, int32_t count, int32_t rows) {
    const char *in = static_cast<const char *>(record.inData);
    char *out = static_cast<char *>(record.outData);
    for (int32_t y = 0; y < rows; y++, in += record.inRowBytes, out += record.outRowBytes) {
        if (record.depth == 32)
            InvertRow<float>(in, out, count, 1.0f);
        else if (record.depth == 16)
            InvertRow<uint16_t>(in, out, count, 32768);
        else
            InvertRow<uint8_t>(in, out, count, 255);
    }
}

namespace {

HostResult InvertTile(FilterRecord &record, const HostRect32 &tile, int16_t plane) {
    BigDocumentStruct &big = *record.bigDocumentData;
    big.inRect32 = big.outRect32 = tile;
    record.inLoPlane = record.inHiPlane = record.outLoPlane = record.outHiPlane = plane;
    const HostResult result = record.advanceState();
    if (result == kNoError)
        InvertBuffers(record, tile.right - tile.left, tile.bottom - tile.top);
    return result;
}

// Lets a test know that a tile is being worked on.
void SpendTime() {
    if (const HANDLE event = OpenEventA(EVENT_MODIFY_STATE, FALSE, "InvertFilterAtWork")) {
        SetEvent(event);
        CloseHandle(event);
    }
    char time[16] = {};
    const bool isGiven = GetEnvironmentVariableA("INVERT_SLOW", time, sizeof(time)) > 0;
    Sleep(isGiven ? static_cast<DWORD>(std::atoi(time)) : kSlowTile);
}

HostResult InvertAll(FilterRecord &record) {
    const HostRect32 area = record.bigDocumentData->filterRect32;
    const bool isSlow = Order() == "slow" || (Order() == "batch" && area.bottom == 33);
    for (int32_t top = area.top; top < area.bottom; top += record.outTileHeight) {
        for (int32_t left = area.left; left < area.right; left += record.outTileWidth) {
            const int32_t bottom = top + record.outTileHeight, right = left + record.outTileWidth;
            const HostRect32 tile = {top, left, bottom < area.bottom ? bottom : area.bottom,
                                     right < area.right ? right : area.right};
            for (int16_t plane = 0; plane < Planes(record); plane++)
                if (const HostResult result = InvertTile(record, tile, plane))
                    return result;
            if (isSlow)
                SpendTime();
            if (record.abortProc())
                return kUserCanceledErr;
        }
        record.progressProc(top - area.top, area.bottom - area.top);
    }
    record.bigDocumentData->inRect32 = record.bigDocumentData->outRect32 = {};
    return kNoError;
}

HostResult Start(FilterRecord &record) {
    const std::string order = Order();
    if (order == "box")
        MessageBoxA(nullptr, "Something to say", "Invert", MB_OK);
    // By the height of the photo, so that one of a batch crashes or hangs.
    if (order == "crash" || (order == "batch" && record.bigDocumentData->imageSize32.v == 31))
        RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    if (order == "report" && record.errorString) {
        std::memcpy(record.errorString, "\x0bNo good day", 12);
        return kErrReportString;
    }
    const HostResult result = InvertAll(record);
    return order == "fail" && result == kNoError ? kFailure : result;
}

} // namespace

extern "C" __declspec(dllexport) void InvertMain(int16_t selector, void *pointer, intptr_t *,
                                                 int16_t *result) {
    *result = kNoError;
    if (selector == kSelectorAbout) {
        MessageBoxA(nullptr, "Inverts.", "About Invert", MB_OK);
        return;
    }
    FilterRecord &record = *static_cast<FilterRecord *>(pointer);
    if (PlayServices(Order(), selector, record, result))
        return;
    record.bigDocumentData->PluginUsing32BitCoordinates = 1;
    record.inputRate = record.maskRate = kFixedOne;
    if (selector == kSelectorParameters && Order() == "ask")
        *result = DialogBoxParamA(nullptr, MAKEINTRESOURCEA(9), nullptr, nullptr, 0) == IDOK
                      ? kNoError
                      : kUserCanceledErr;
    else if (selector == kSelectorFinish && Order() == "norecord")
        *result = kErrMissingParameter;
    else if (selector == kSelectorStart)
        *result = Start(record);
}
