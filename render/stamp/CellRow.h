// What of an arm or a flare can show in a row of blocks (RoomMap.h): a span about a middle in each of them.
#pragma once

#include "render/stamp/Laying.h"

#include <algorithm>
#include <cstdint>

// More columns than that are taken one part after the other.
constexpr int32_t kMostCells = 64;

// Offsets from the source's pixel.
struct CellRow {
    PixelRange columns;       // of the pixels
    int32_t left;             // of the first cell
    int32_t count, cellWidth; // of cells
    double reach[kMostCells]; // of each; how wide a span it makes of a row is its user's
};

// Calls work(span) for each span of a row whose middle is `middle`, widthOf(reach) to each side; below 0
// there is none. What meets at the border of two cells is one span.
template <typename WidthOf, typename Work>
void ForEachSpan(const CellRow &cells, double middle, WidthOf widthOf, Work work) {
    PixelRange open = {0, -1};
    for (int32_t i = 0; i < cells.count; ++i) {
        const double width = widthOf(cells.reach[i]) + kRoundingRoom;
        if (width < 0.0)
            continue;
        const int32_t left = cells.left + i * cells.cellWidth;
        // Past the last pixel that is surely outside, up to the last that may be inside.
        const double before = std::clamp<double>(middle - width - left, -1.0, cells.cellWidth),
                     last = std::clamp<double>(middle + width - left, -1.0, cells.cellWidth - 1);
        const int32_t from = std::max(left + static_cast<int32_t>(before + 1.0), cells.columns.from);
        const int32_t to = std::min(left + static_cast<int32_t>(last + 1.0) - 1, cells.columns.to);
        if (from > to)
            continue;
        if (open.to + 1 == from && open.from <= open.to) {
            open.to = to;
            continue;
        }
        if (open.from <= open.to)
            work(open);
        open = {from, to};
    }
    if (open.from <= open.to)
        work(open);
}

// Calls work(rows) for each row of blocks that has a part in `rows`.
template <typename Work> void ForEachBlockRow(const Laying &laying, PixelRange rows, Work work) {
    const int32_t origin = laying.target.band.top - laying.place.y;
    while (rows.from <= rows.to && !IsAborted(laying)) {
        const int32_t next = rows.from + kBlockRows - (rows.from - origin) % kBlockRows;
        work({rows.from, std::min(rows.to, next - 1)});
        rows.from = next;
    }
}

// The same for columns of a row of blocks, with cells of some blocks each; their reaches are reachAt(area,
// level), in which `level` is the least value that can show there.
template <typename ReachAt, typename Work>
void ForEachCells(const Laying &laying, const PixelRange &rows, PixelRange columns, int32_t cellBlocks,
                  ReachAt reachAt, Work work) {
    const int32_t originX = laying.target.band.left - laying.place.x,
                  originY = laying.target.band.top - laying.place.y;
    const int32_t blockRow = (rows.from - originY) / kBlockRows;
    while (columns.from <= columns.to) {
        const int32_t first = (columns.from - originX) / kBlockWidth,
                      end = (columns.to - originX) / kBlockWidth + 1;
        CellRow cells;
        cells.left = originX + first * kBlockWidth;
        cells.cellWidth = cellBlocks * kBlockWidth;
        cells.count = std::min((end - first + cellBlocks - 1) / cellBlocks, kMostCells);
        cells.columns = {columns.from, std::min(columns.to, cells.left + cells.count * cells.cellWidth - 1)};
        for (int32_t i = 0; i < cells.count; ++i) {
            const int32_t block = first + i * cellBlocks, left = cells.left + i * cells.cellWidth;
            const float way = LargestWay(*laying.target.room, {block, std::min(block + cellBlocks, end) - 1},
                                         blockRow, laying.planeStrength);
            const IntRect area = {std::max(left, cells.columns.from), rows.from,
                                  std::min(left + cells.cellWidth, cells.columns.to + 1), rows.to + 1};
            cells.reach[i] = reachAt(area, LeastGlow(way));
        }
        work(cells);
        columns.from = cells.columns.to + 1;
    }
}
