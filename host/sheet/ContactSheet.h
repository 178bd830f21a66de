// Small pictures with labels, on one picture.
#pragma once

#include "host/sheet/SmallPicture.h"

#include <string>
#include <vector>

namespace host {

struct SheetCell {
    std::vector<SmallPicture> pictures; // side by side
    std::wstring label;
};

// As many cells in a row as a sheet of a screen's width takes; all cells hold as many pictures of at most
// `side` pixels. At least one cell.
Picture MakeContactSheet(const std::vector<SheetCell> &cells, int32_t side);

// Where a sheet of before and after is to have so many cells: the side of their pictures.
int32_t PairSide(size_t cells);
// No more cells than that stand on a sheet.
constexpr size_t kMostSheetCells = 1000;

} // namespace host
