#include "host/metadata/JpegSegments.h"

#include <algorithm>
#include <cstdlib>

namespace host {

constexpr uint8_t kQuantisation = 0xDB, kScan = 0xDA, kComment = 0xFE, kFirstFrame = 0xC0;
constexpr size_t kStart = 2; // behind the mark of the file's start
constexpr int kCells = 64;

// The format's example table for luminance at quality 50, in zigzag order: what nearly all programs scale.
static constexpr uint8_t kExample[kCells] = {
    16, 11,  12, 14, 12, 10, 16,  14,  13,  14, 18, 17,  16,  19,  24,  40,  26, 24,  22,  22, 24, 49,
    35, 37,  29, 40, 58, 51, 61,  60,  57,  51, 56, 55,  64,  72,  92,  78,  64, 68,  87,  69, 55, 56,
    80, 109, 81, 87, 95, 98, 103, 104, 103, 62, 77, 113, 121, 112, 100, 120, 92, 101, 103, 99};

static int32_t ScaledCell(int cell, int32_t quality) {
    const int32_t percent = quality < 50 ? 5000 / quality : 200 - 2 * quality;
    return std::clamp((kExample[cell] * percent + 50) / 100, 1, 255);
}

// `table` has 64 cells of one or two bytes.
static int32_t NearestQuality(const uint8_t *table, bool isWide) {
    int32_t nearest = 0;
    int64_t least = INT64_MAX;
    for (int32_t quality = 1; quality <= 100; ++quality) {
        int64_t difference = 0;
        for (int cell = 0; cell < kCells; ++cell) {
            const int32_t value =
                isWide ? NumberAt<uint16_t>(table + ptrdiff_t{2} * cell, ByteOrder::kBig) : table[cell];
            difference += std::abs(value - ScaledCell(cell, quality));
        }
        if (difference <= least) { // of several alike the best
            least = difference;
            nearest = quality;
        }
    }
    return nearest;
}

// Table 0 among those of one segment; null when it is not there.
static const uint8_t *FindLuminance(const uint8_t *tables, size_t length, bool *isWide) {
    for (size_t at = 0; at < length;) {
        const uint8_t head = tables[at++];
        const size_t size = static_cast<size_t>(kCells) * (head >> 4 ? 2 : 1);
        if (size > length - at)
            return nullptr;
        if ((head & 15) == 0) {
            *isWide = head >> 4 != 0;
            return tables + at;
        }
        at += size;
    }
    return nullptr;
}

// A segment in front of the coded data.
struct Segment {
    uint8_t marker;
    size_t at, length; // of its content
};

// The segment at `at`, which moves behind it. False at the coded data, and where the bytes are no segments.
static bool NextSegment(const uint8_t *bytes, size_t length, size_t *at, Segment *segment) {
    while (*at + 4 <= length && bytes[*at] == 0xFF && bytes[*at + 1] == 0xFF)
        ++*at; // fill bytes
    if (*at + 4 > length || bytes[*at] != 0xFF || bytes[*at + 1] == kScan)
        return false;
    const size_t size = NumberAt<uint16_t>(bytes + *at + 2, ByteOrder::kBig);
    if (size < 2 || size > length - *at - 2)
        return false;
    *segment = {bytes[*at + 1], *at + 4, size - 2};
    *at += 2 + size;
    return true;
}

int32_t EstimateJpegQuality(const Bytes &file) {
    Segment segment;
    for (size_t at = kStart; NextSegment(file.data(), file.size(), &at, &segment);) {
        bool isWide = false;
        const uint8_t *table = segment.marker == kQuantisation
                                   ? FindLuminance(file.data() + segment.at, segment.length, &isWide)
                                   : nullptr;
        if (table)
            return NearestQuality(table, isWide);
    }
    return 0;
}

// Of the frame's header: six bytes of depth and size, then three a channel, of which the second has its
// resolution across and down.
bool HalvesJpegColour(const Bytes &file) {
    Segment segment;
    for (size_t at = kStart; NextSegment(file.data(), file.size(), &at, &segment);)
        if (segment.marker >= kFirstFrame && segment.marker <= kFirstFrame + 2 && segment.length >= 15) {
            const uint8_t *channels = file.data() + segment.at + 6;
            return channels[1] == 0x22 && channels[4] == 0x11 && channels[7] == 0x11;
        }
    return false;
}

std::vector<Bytes> ReadJpegComments(const Bytes &file) {
    std::vector<Bytes> comments;
    Segment segment;
    for (size_t at = kStart; NextSegment(file.data(), file.size(), &at, &segment);)
        if (segment.marker == kComment)
            comments.emplace_back(file.data() + segment.at, file.data() + segment.at + segment.length);
    return comments;
}

Bytes MakeJpegComments(const std::vector<Bytes> &comments) {
    Bytes made;
    for (const Bytes &comment : comments) {
        made.push_back(0xFF);
        made.push_back(kComment);
        AppendNumber(made, static_cast<uint16_t>(comment.size() + 2), ByteOrder::kBig);
        AppendBytes(made, comment.data(), comment.size());
    }
    return made;
}

// Behind the application's segments: some of them must come first.
size_t JpegCommentPlace(const uint8_t *bytes, size_t length) {
    size_t place = kStart;
    Segment segment;
    for (size_t at = kStart; NextSegment(bytes, length, &at, &segment);) {
        if (segment.marker < 0xE0 || segment.marker > 0xEF)
            break;
        place = at;
    }
    return place;
}

} // namespace host
