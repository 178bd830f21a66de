// The yardstick's light source table.
#pragma once

#include "engine/table/LightSourceTable.h"
#include "tests/reference/detect/ReferenceReduce.h"

#include <string>
#include <vector>

namespace reference {

using Table = std::vector<LightSource>;

void Add(Table *table, const LightSourcePosition &position, float radiusSquared, uint32_t red, uint32_t green,
         uint32_t blue, bool enabled);
void Merge(const Table &worker, const Analysis &analysis, Table *global);
void Rank(Table *table);
// Index of the changed source, or -1.
int32_t SetStateAt(Table *table, int32_t x, int32_t y, double zoomPercent, int32_t mode);
int32_t SetStatesInRect(Table *table, const IntRect &rect, int32_t mode);
// The viewer's whole text, line after line.
std::vector<std::string> FormatTable(const Table &table);

} // namespace reference
