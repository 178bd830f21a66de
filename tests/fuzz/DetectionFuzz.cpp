// Detection on any small picture: the bands' workers one after another and at once give the same table, and
// nothing but that is left behind.
#include "diag/BufferUsage.h"
#include "engine/SerialBuild.h"
#include "tests/fuzz/FuzzPicture.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/ThreadedBuild.h"

#include <utility>

namespace {

// Sides beyond 1200 are reduced first; such pictures are thin. Flat areas need some 140 pixels each way.
IntRect TakeBounds(CaseBytes *from) {
    const int32_t shape = from->Pick(0, 15), least = shape & 2 ? 160 : 1, side = from->Pick(least, 240);
    int32_t width = shape > 13 ? from->Pick(1000, 9000) : from->Pick(least, 240),
            height = shape > 13 ? side % 12 + 1 : side;
    if (shape & 1)
        std::swap(width, height);
    const int32_t far = shape & 1 ? 32767 : 300;
    const int32_t left = shape & 4 ? from->Pick(-far, far) : 0, top = shape & 8 ? from->Pick(-far, far) : 0;
    return {left, top, left + width, top + height};
}

// A round spot that gets darker outward, or a flat one: in the colours, the transparency or the mask.
void PaintSpot(CaseBytes *from, const ImageBuffer &image) {
    const int32_t kind = from->Take<uint8_t>();
    const int32_t x = from->Pick(0, image.width - 1), y = from->Pick(0, image.height - 1);
    const int32_t radius = from->Pick(0, kind & 1 ? 200 : 15), level = from->Take<uint8_t>();
    const uint32_t tint = from->Take<uint32_t>();
    const auto *raw = kind & 128 ? reinterpret_cast<const uint8_t *>(&tint) : nullptr;
    const IntRect reach = IntersectRects({x - radius, y - radius, x + radius + 1, y + radius + 1},
                                         {0, 0, image.width, image.height});
    for (int32_t row = reach.top; row < reach.bottom; ++row)
        for (int32_t column = reach.left; column < reach.right; ++column) {
            const int32_t distance = (row - y) * (row - y) + (column - x) * (column - x);
            const int64_t pixel = int64_t{row} * image.width + column;
            const int32_t share = kind & 2 ? 255 : 255 - 255 * distance / (radius * radius + 1);
            if (share < 0)
                continue;
            const auto value = static_cast<uint8_t>(level * share / 255);
            if (kind & 4 && image.mask)
                image.mask[pixel] = value;
            for (int32_t plane = kind & 8 ? image.colorPlanes : 0; plane < PlaneCount(image); ++plane)
                if (kind & 8 || plane < image.colorPlanes)
                    PutSample(image, plane, pixel, value >> (kind & 16 ? tint >> plane * 8 & 3 : 0), raw);
        }
}

std::vector<LightSource> TakeTable() {
    const LightSourceTableView view = GetLightSourceTable();
    return {view.records, view.records + view.count};
}

void RequireSound(const std::vector<LightSource> &table) {
    for (size_t i = 0; i < table.size(); ++i) {
        const LightSource &light = table[i];
        Require((light.XQuarter & ~3) == 0 && (light.YQuarter & ~3) == 0, "quarters are 0 to 3");
        Require(light.State <= 1 && light.RadiusSquared >= 0, "a light is normal or covered and has a size");
        Require(i == 0 || light.Brightness <= table[i - 1].Brightness, "the brightest come first");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t length) {
    CaseBytes from{bytes, length};
    const int32_t workers = from.Pick(1, 4);
    const IntRect bounds = TakeBounds(&from);
    const TestImage image = TakePicture(&from, bounds);
    for (int i = 0; i < 40 && from.length > 0; ++i)
        PaintSpot(&from, image.buffer);
    const std::vector<uint8_t> before = image.Bytes();
    const int64_t held = BufferBytesInUse();
    const std::atomic<uint8_t> cancel{0};
    Require(BuildLightSourceTable(image.buffer, workers, cancel) == kNoError, "one after another ends well");
    const std::vector<LightSource> expected = TakeTable();
    ThreadedBuild threaded;
    Require(threaded.Run(image.buffer, workers, cancel, ScanOnThreads) == kNoError, "at once ends well");
    const std::vector<LightSource> table = TakeTable();
    Require(table.size() == expected.size() &&
                (table.empty() ||
                 std::memcmp(table.data(), expected.data(), table.size() * sizeof table[0]) == 0),
            "one table however many workers scan at once");
    RequireSound(table);
    FreeTableRecords(gLightSourceTable);
    Require(BufferBytesInUse() == held && TakeReports().empty(), "nothing is held, nothing reported");
    const std::atomic<uint8_t> cancelled = from.Pick(0, 7) == 7;
    FailAllocation(from.Pick(0, 100), from.Pick(0, 1) != 0);
    const HostResult result = BuildLightSourceTable(image.buffer, workers, cancelled);
    FailAllocation(0, false);
    Require(result == kNoError || result == kMemFullErr || result == kParamErr ||
                (cancelled && result == kUserCanceledErr),
            "without memory, or cancelled, an end that is known");
    FreeTableRecords(gLightSourceTable);
    Require(BufferBytesInUse() == held, "nothing is held then either");
    TakeReports();
    Require(image.Bytes() == before, "the picture stays as it is");
    return 0;
}
