#include "plugin/DiagnosticRequests.h"

#include "engine/table/LightSourceTable.h"
#include "engine/table/LightSourceText.h"
#include "render/KeptRun.h"

#include <algorithm>
#include <cstring>

static_assert(kDiagnosticPictures == kDebugPictures);

namespace {

template <typename Record> Record *RecordAt(intptr_t lParam) {
    return reinterpret_cast<Record *>(lParam);
}

intptr_t ChooseKept(uintptr_t what) {
    ChooseWhatToKeep((what & kKeepLights) != 0, (what & kKeepImages) != 0);
    return 1;
}

// Nothing but a kept table may be shown: while a run is on, its task is writing there.
LightSourceTableView KeptLights() {
    return IsRunKept() ? GetLightSourceTable() : LightSourceTableView{nullptr, 0};
}

DiagnosticLight DescribeLight(const LightSource &light, uint32_t rank) {
    return {rank,
            light.State,
            IsLightSourceSelected(light, KeptCutLevel()) ? 1u : 0u,
            light.X * 4 + light.XQuarter,
            light.Y * 4 + light.YQuarter,
            light.RadiusSquared,
            light.Brightness,
            light.Red,
            light.Green,
            light.Blue};
}

intptr_t CopyLights(uintptr_t room, DiagnosticLight *lights) {
    const LightSourceTableView kept = KeptLights();
    const uint32_t count = lights ? static_cast<uint32_t>(std::min<uintptr_t>(room, kept.count)) : 0;
    for (uint32_t i = 0; i < count; ++i)
        lights[i] = DescribeLight(kept.records[i], i);
    return count;
}

intptr_t CopyLine(bool first, DiagnosticLine *line) {
    const char *text = line && IsRunKept() ? FormatLightSourceTableLine(first) : nullptr;
    const size_t size = text ? strlen(text) + 1 : sizeof line->text + 1;
    if (size > sizeof line->text)
        return 0;
    memcpy(line->text, text, size);
    return 1;
}

intptr_t CopyPicture(uintptr_t choice, DiagnosticPicture *picture) {
    DebugPicturePlace place;
    if (!picture || choice >= kDiagnosticPictures || !FindDebugPicture(static_cast<int32_t>(choice), &place))
        return 0;
    const int32_t width = place.area.right - place.area.left;
    const int32_t height = place.area.bottom - place.area.top;
    if (picture->pixels) {
        const uint64_t needed = uint64_t(width) * uint64_t(height) * 4;
        if (picture->pixelBytes < needed ||
            !DrawDebugPicture(static_cast<int32_t>(choice), place, picture->pixels))
            return 0;
    }
    picture->width = width;
    picture->height = height;
    return 1;
}

} // namespace

intptr_t AnswerDiagnosticRequest(uint32_t message, uintptr_t wParam, intptr_t lParam) {
    switch (message) {
    case kDiagnosticVersion:
        return kDiagnosticVersionNumber;
    case kDiagnosticKeep:
        return ChooseKept(wParam);
    case kDiagnosticLightCount:
        return KeptLights().count;
    case kDiagnosticCopyLights:
        return CopyLights(wParam, RecordAt<DiagnosticLight>(lParam));
    case kDiagnosticLine:
        return CopyLine(wParam != 0, RecordAt<DiagnosticLine>(lParam));
    case kDiagnosticCopyPicture:
        return CopyPicture(wParam, RecordAt<DiagnosticPicture>(lParam));
    default:
        return 0;
    }
}
