// The renderer's stamps written out as the plain form's entries, row by row; entries of one pixel are in
// drawing order.
#pragma once

#include "render/SoftFlare.h"
#include "render/StarStamp.h"
#include "tests/plain/PlainStamps.h"

#include <vector>

std::vector<plain::StampEntry> EntriesOf(const StampContext &context, const StarStamp &stamp,
                                         const StarTables &tables);
std::vector<plain::StampEntry> EntriesOf(const StampContext &context, const FlareStamp &flare,
                                         const ValueTable &values);
// Puts plain entries into that order.
std::vector<plain::StampEntry> SortedByPixel(std::vector<plain::StampEntry> entries);
