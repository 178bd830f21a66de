// Uncompressed TIFF in strips: 8-, 16-bit and float, grey and colour, with transparency and colour profile.
// The system's codec cannot write all of these.
#include "host/pictures/PictureFormat.h"
#include "host/pictures/TiffDirectory.h"

#include <algorithm>

namespace host {

constexpr size_t kStripSize = 1u << 20; // about
constexpr uint32_t kDirectoryAt = 8;    // right behind the header
constexpr uint64_t kLargestTiff = 0xFFFFFFFFull;

struct TiffTag {
    uint16_t tag;
    uint16_t type;
    uint32_t count;
    Bytes value; // of 4 bytes or more
};

static TiffTag MakeTag(uint16_t tag, uint16_t type, const std::vector<uint32_t> &numbers) {
    TiffTag made = {tag, type, static_cast<uint32_t>(numbers.size()), {}};
    for (const uint32_t number : numbers) {
        if (type == kTiffShort)
            AppendNumber(made.value, static_cast<uint16_t>(number));
        else
            AppendNumber(made.value, number);
    }
    made.value.resize(std::max<size_t>(made.value.size(), 4));
    return made;
}

static TiffTag MakeResolution(uint16_t tag) {
    TiffTag made = {tag, kTiffRational, 1, {}};
    AppendNumber(made.value, uint32_t{72});
    AppendNumber(made.value, uint32_t{1});
    return made;
}

struct StripPlan {
    uint32_t rowsPerStrip;
    std::vector<uint32_t> lengths;
};

static StripPlan PlanStrips(const Picture &picture) {
    const size_t rowLength =
        static_cast<size_t>(picture.width) * picture.planes.size() * static_cast<size_t>(picture.depth / 8);
    const size_t height = static_cast<size_t>(picture.height);
    const size_t rows = std::clamp<size_t>(kStripSize / rowLength, 1, height);
    StripPlan plan = {static_cast<uint32_t>(rows), {}};
    for (size_t y = 0; y < height; y += rows)
        plan.lengths.push_back(static_cast<uint32_t>(std::min(rows, height - y) * rowLength));
    return plan;
}

// All tags in ascending order; strip offsets are filled in when the directory's size is known.
static std::vector<TiffTag> MakeTags(const Picture &picture, const StripPlan &plan) {
    const uint32_t channels = static_cast<uint32_t>(picture.planes.size());
    const uint32_t depth = static_cast<uint32_t>(picture.depth);
    std::vector<TiffTag> tags = {
        MakeTag(kTiffWidth, kTiffLong, {static_cast<uint32_t>(picture.width)}),
        MakeTag(kTiffHeight, kTiffLong, {static_cast<uint32_t>(picture.height)}),
        MakeTag(kTiffBits, kTiffShort, std::vector<uint32_t>(channels, depth)),
        MakeTag(kTiffCompression, kTiffShort, {1}),
        MakeTag(kTiffPhotometric, kTiffShort, {picture.colourPlanes == 3 ? 2u : 1u}),
        MakeTag(kTiffStripOffsets, kTiffLong, std::vector<uint32_t>(plan.lengths.size())),
        MakeTag(kTiffSamples, kTiffShort, {channels}),
        MakeTag(kTiffRowsPerStrip, kTiffLong, {plan.rowsPerStrip}),
        MakeTag(kTiffStripLengths, kTiffLong, plan.lengths),
        MakeResolution(kTiffXResolution),
        MakeResolution(kTiffYResolution),
        MakeTag(kTiffPlanar, kTiffShort, {1}),
        MakeTag(kTiffResolutionUnit, kTiffShort, {2}),
    };
    if (picture.hasAlpha)
        tags.push_back(MakeTag(kTiffExtraSamples, kTiffShort, {2})); // not multiplied into the colours
    tags.push_back(
        MakeTag(kTiffSampleFormat, kTiffShort, std::vector<uint32_t>(channels, depth == 32 ? 3u : 1u)));
    if (!picture.iccProfile.empty()) {
        tags.push_back({kTiffProfile, kTiffUndefined, static_cast<uint32_t>(picture.iccProfile.size()),
                        picture.iccProfile});
        tags.back().value.resize(std::max<size_t>(picture.iccProfile.size(), 4));
    }
    return tags;
}

static size_t ValueRoom(const TiffTag &tag) {
    return tag.value.size() > 4 ? (tag.value.size() + 1) / 2 * 2 : 0;
}

static uint64_t HeaderSize(const std::vector<TiffTag> &tags) {
    uint64_t size = kDirectoryAt + 2 + 12 * tags.size() + 4;
    for (const TiffTag &tag : tags)
        size += ValueRoom(tag);
    return size;
}

static Bytes MakeHeader(const std::vector<TiffTag> &tags) {
    Bytes header = {'I', 'I', 42, 0};
    AppendNumber(header, kDirectoryAt);
    AppendNumber(header, static_cast<uint16_t>(tags.size()));
    Bytes values;
    const size_t valuesAt = kDirectoryAt + 2 + 12 * tags.size() + 4;
    for (const TiffTag &tag : tags) {
        AppendNumber(header, tag.tag);
        AppendNumber(header, tag.type);
        AppendNumber(header, tag.count);
        if (ValueRoom(tag) == 0) {
            AppendBytes(header, tag.value.data(), tag.value.size());
            continue;
        }
        AppendNumber(header, static_cast<uint32_t>(valuesAt + values.size()));
        AppendBytes(values, tag.value.data(), tag.value.size());
        values.resize((values.size() + 1) / 2 * 2);
    }
    AppendNumber(header, uint32_t{0}); // no further directory
    AppendBytes(header, values.data(), values.size());
    return header;
}

static void FillOffsets(std::vector<TiffTag> &tags, const StripPlan &plan) {
    std::vector<uint32_t> offsets;
    uint64_t at = HeaderSize(tags);
    for (const uint32_t length : plan.lengths) {
        offsets.push_back(static_cast<uint32_t>(at));
        at += length;
    }
    for (TiffTag &tag : tags)
        if (tag.tag == kTiffStripOffsets)
            tag = MakeTag(kTiffStripOffsets, kTiffLong, offsets);
}

bool WriteTiff(const Picture &picture, OutputFile *file, std::string *why) {
    const StripPlan plan = PlanStrips(picture);
    std::vector<TiffTag> tags = MakeTags(picture, plan);
    uint64_t total = HeaderSize(tags);
    for (const uint32_t length : plan.lengths)
        total += length;
    if (total > kLargestTiff) {
        *why = "a TIFF file holds at most 4 GB";
        return false;
    }
    FillOffsets(tags, plan);
    const Bytes header = MakeHeader(tags);
    if (!AppendOutput(file, header.data(), header.size(), why))
        return false;
    const int32_t step = static_cast<int32_t>(plan.rowsPerStrip);
    for (int32_t y = 0; y < picture.height; y += step) {
        Bytes rows;
        InterleaveRows(picture, picture.planes.size(), y, std::min(y + step, picture.height),
                       ByteOrder::kLittle, &rows);
        if (!AppendOutput(file, rows.data(), rows.size(), why))
            return false;
    }
    return true;
}

} // namespace host
