#include "ui/viewers/DebugImageStatus.h"

#include "engine/DebugImages.h"
#include "engine/table/LightSourceTable.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

// Appends as much as there is room for.
template <typename... Values>
void Append(DebugStatus *status, size_t *length, const char *format, Values... values) {
    const size_t room = sizeof status->text - *length;
    const int printed = snprintf(status->text + *length, room, format, values...);
    if (printed > 0)
        *length += std::min(static_cast<size_t>(printed), room - 1);
}

int Percent(uint32_t level) {
    return static_cast<int>(std::lround(level / 4294967295.0 * 100.0));
}

void AppendSample(const KeptImage &kept, int32_t column, int32_t row, DebugStatus *status, size_t *length) {
    const IntRect &bounds = kept.image.bounds;
    const size_t index = size_t(row) * size_t(bounds.right - bounds.left) + size_t(column);
    const PixelSample &sample = kept.image.samples[index];
    Append(status, length, "   R %06X G %06X B %06X   brightness %06X", sample.red, sample.green, sample.blue,
           PixelBrightness(sample));
    Append(status, length, "\nselected %d %%, covered %d %%%s", Percent(sample.selectionLevel),
           Percent(sample.coverage), kept.flat[index] ? ", flat area" : "");
}

bool IsSameArea(const IntRect &a, const IntRect &b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

// The place is in document pixels.
void AppendNearestLight(double x, double y, DebugStatus *status, size_t *length) {
    const LightSourceTableView lights = GetLightSourceTable();
    double nearest = 0;
    const LightSource *found = nullptr;
    for (uint32_t i = 0; i < lights.count; ++i) {
        const LightSource &light = lights.records[i];
        const double dx = light.X + light.XQuarter * 0.25 - x, dy = light.Y + light.YQuarter * 0.25 - y;
        const double square = dx * dx + dy * dy;
        if (!found || square < nearest) {
            nearest = square;
            found = &light;
        }
    }
    if (!found) {
        Append(status, length, "   no lights");
        return;
    }
    Append(status, length, "   nearest light %u: %.1f pixels away, Diam = %.2f, Bright = %X%s",
           static_cast<unsigned>(found - lights.records), std::sqrt(nearest),
           2 * std::sqrt(double(found->RadiusSquared)), found->Brightness, found->State == 0 ? " (D)" : "");
}

} // namespace

DebugStatus DescribeDebugPicture(int32_t choice, const DebugPicturePlace &place) {
    DebugStatus status{};
    size_t length = 0;
    Append(&status, &length, "%d x %d pixels", place.area.right - place.area.left,
           place.area.bottom - place.area.top);
    if (choice != kStampPicture)
        Append(&status, &length, ", each %.3f of the document's\n%u lights", place.scale,
               GetLightSourceTable().count);
    return status;
}

DebugStatus DescribeDebugPixel(int32_t choice, const DebugPicturePlace &place, int32_t column, int32_t row,
                               const uint8_t *bgra) {
    DebugStatus status{};
    size_t length = 0;
    const int32_t x = place.area.left + column, y = place.area.top + row;
    Append(&status, &length, "x %d, y %d", x, y);
    if (choice == kStampPicture) {
        Append(&status, &length, " from the light   R %d G %d B %d", bgra[2], bgra[1], bgra[0]);
        return status;
    }
    Append(&status, &length, " (document %.1f, %.1f)", x * place.scale, y * place.scale);
    const KeptImage &kept = GetKeptImage();
    // Another run may have kept another image since the picture was made.
    if (kept.image.samples && IsSameArea(kept.image.bounds, place.area))
        AppendSample(kept, column, row, &status, &length);
    AppendNearestLight(x * place.scale, y * place.scale, &status, &length);
    return status;
}
