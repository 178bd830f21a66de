#include "host/pictures/JpegTables.h"

#include <algorithm>
#include <cstdlib>

namespace host {

constexpr uint8_t kQuantisation = 0xDB, kScan = 0xDA;
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
                isWide ? NumberAt<uint16_t>(table + 2 * cell, ByteOrder::kBig) : table[cell];
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

int32_t EstimateJpegQuality(const Bytes &file) {
    for (size_t at = 2; file.size() >= 4 && at <= file.size() - 4;) {
        if (file[at] != 0xFF)
            return 0;
        if (file[at + 1] == 0xFF) { // fill byte
            ++at;
            continue;
        }
        const size_t length = NumberAt<uint16_t>(file.data() + at + 2, ByteOrder::kBig);
        if (length < 2 || length > file.size() - at - 2 || file[at + 1] == kScan)
            return 0;
        bool isWide = false;
        const uint8_t *table = file[at + 1] == kQuantisation
                                   ? FindLuminance(file.data() + at + 4, length - 2, &isWide)
                                   : nullptr;
        if (table)
            return NearestQuality(table, isWide);
        at += 2 + length;
    }
    return 0;
}

} // namespace host
