// Finds the light sources near a point without a walk over the whole table: adding n sources would otherwise
// take n² steps, minutes for a picture of glitter. A table works the same with and without a grid.
#pragma once

#include "engine/image/Geometry.h"
#include "engine/table/LightSource.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

// A good size of a cell, in pixels of the analysis image.
constexpr int32_t kGridCellSize = 8;

struct LightSourceGridNode {
    uint32_t record; // index into the table
    uint32_t next;   // index of the next node + 1; 0: none
};

// Square cells, each with a list of the sources whose disk may touch it. What lies outside the bounds belongs
// to the cells at the edge. Owner: the table; FreeLightSourceGrid releases it.
struct LightSourceGrid {
    IntRect bounds;
    int32_t cellSize; // pixels
    int32_t columns, rows;
    uint32_t *heads; // index of a cell's first node + 1; 0: none
    size_t headBytes;
    LightSourceGridNode *nodes;
    uint32_t nodeCount;
    size_t nodeBytes;
};

// Gives the table a grid for sources within `bounds` (not empty) and enters what it holds. Without the memory
// for it the table stays without.
void AttachLightSourceGrid(const IntRect &bounds, int32_t cellSize, LightSourceTable *table);
void FreeLightSourceGrid(LightSourceTable *table);

// Enters the record `index`. When memory runs out the table loses its grid.
void EnterIntoGrid(LightSourceTable *table, uint32_t index);

inline int32_t GridCell(int32_t position, int64_t reach, int32_t begin, int32_t cellSize, int32_t cells) {
    const int64_t cell = (position + reach - begin) / cellSize;
    return static_cast<int32_t>(std::clamp<int64_t>(cell, 0, cells - 1));
}

// Hands every source that may lie within `reach` pixels of (x, y), or cover that point, to `visit`, in no
// fixed order and possibly several times. Stops when `visit` returns true; returns whether it did.
template <typename Visit>
bool VisitNearbySources(const LightSourceTable &table, int32_t x, int32_t y, int64_t reach, Visit visit) {
    const LightSourceGrid *grid = table.grid;
    if (!grid)
        return std::any_of(table.records, table.records + table.Count, visit);
    const int32_t lastColumn = GridCell(x, reach, grid->bounds.left, grid->cellSize, grid->columns);
    const int32_t lastRow = GridCell(y, reach, grid->bounds.top, grid->cellSize, grid->rows);
    for (int32_t row = GridCell(y, -reach, grid->bounds.top, grid->cellSize, grid->rows); row <= lastRow;
         ++row)
        for (int32_t column = GridCell(x, -reach, grid->bounds.left, grid->cellSize, grid->columns);
             column <= lastColumn; ++column)
            for (uint32_t node = grid->heads[row * grid->columns + column]; node != 0;
                 node = grid->nodes[node - 1].next)
                if (visit(table.records[grid->nodes[node - 1].record]))
                    return true;
    return false;
}

// The whole pixels that a radius of this square reaches, rounded up.
inline int64_t ReachOfSquare(int32_t radiusSquared) {
    return static_cast<int64_t>(std::ceil(std::sqrt(static_cast<double>(radiusSquared))));
}
