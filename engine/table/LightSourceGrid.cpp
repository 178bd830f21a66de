#include "engine/table/LightSourceGrid.h"

#include "diag/BufferUsage.h"

#include <cstring>
#include <limits>

namespace {

// At least this many nodes more each time, and in proportion, so that filling stays linear.
constexpr size_t kGrowthNodes = 4096;

int32_t CellsAcross(int32_t begin, int32_t end, int32_t cellSize) {
    return static_cast<int32_t>((int64_t{end} - begin + cellSize - 1) / cellSize);
}

bool ReserveNode(LightSourceGrid *grid) {
    const size_t capacity = grid->nodeBytes / sizeof(LightSourceGridNode);
    if (grid->nodeCount < capacity)
        return true;
    const size_t newBytes = (capacity + capacity / 2 + kGrowthNodes) * sizeof(LightSourceGridNode);
    if (newBytes / sizeof(LightSourceGridNode) >= std::numeric_limits<uint32_t>::max())
        return false;
    void *grown = CountedRealloc(grid->nodes, grid->nodeBytes, newBytes);
    if (!grown)
        return false;
    grid->nodes = static_cast<LightSourceGridNode *>(grown);
    grid->nodeBytes = newBytes;
    return true;
}

bool PutIntoCell(LightSourceGrid *grid, uint32_t *head, uint32_t record) {
    if (!ReserveNode(grid))
        return false;
    grid->nodes[grid->nodeCount] = LightSourceGridNode{record, *head};
    *head = ++grid->nodeCount;
    return true;
}

// Into every cell that the square around its disk touches.
bool PutIntoCells(LightSourceGrid *grid, const LightSource &source, uint32_t record) {
    const int64_t reach = ReachOfSquare(source.RadiusSquared);
    const int32_t firstRow = GridCell(source.Y, -reach, grid->bounds.top, grid->cellSize, grid->rows);
    const int32_t lastRow = GridCell(source.Y, reach, grid->bounds.top, grid->cellSize, grid->rows);
    const int32_t firstColumn = GridCell(source.X, -reach, grid->bounds.left, grid->cellSize, grid->columns);
    const int32_t lastColumn = GridCell(source.X, reach, grid->bounds.left, grid->cellSize, grid->columns);
    for (int32_t row = firstRow; row <= lastRow; ++row)
        for (int32_t column = firstColumn; column <= lastColumn; ++column)
            if (!PutIntoCell(grid, &grid->heads[row * grid->columns + column], record))
                return false;
    return true;
}

} // namespace

void AttachLightSourceGrid(const IntRect &bounds, int32_t cellSize, LightSourceTable *table) {
    FreeLightSourceGrid(table);
    auto *grid = static_cast<LightSourceGrid *>(CountedAlloc(sizeof(LightSourceGrid)));
    if (!grid)
        return;
    *grid = LightSourceGrid{};
    grid->bounds = bounds;
    grid->cellSize = cellSize;
    grid->columns = CellsAcross(bounds.left, bounds.right, cellSize);
    grid->rows = CellsAcross(bounds.top, bounds.bottom, cellSize);
    grid->headBytes = static_cast<size_t>(grid->columns) * static_cast<size_t>(grid->rows) * sizeof(uint32_t);
    grid->heads = static_cast<uint32_t *>(CountedAlloc(grid->headBytes));
    table->grid = grid;
    if (!grid->heads) {
        FreeLightSourceGrid(table);
        return;
    }
    memset(grid->heads, 0, grid->headBytes);
    for (uint32_t i = 0; i < table->Count; ++i)
        EnterIntoGrid(table, i);
}

void FreeLightSourceGrid(LightSourceTable *table) {
    LightSourceGrid *grid = table->grid;
    if (!grid)
        return;
    CountedFree(grid->heads, grid->headBytes);
    CountedFree(grid->nodes, grid->nodeBytes);
    CountedFree(grid, sizeof *grid);
    table->grid = nullptr;
}

void EnterIntoGrid(LightSourceTable *table, uint32_t index) {
    if (table->grid && !PutIntoCells(table->grid, table->records[index], index))
        FreeLightSourceGrid(table);
}
