#include "engine/table/LightSourceText.h"

#include "engine/table/LightSourceTable.h"

#include <cmath>
#include <cstdio>

namespace {

char gLine[256];        // the line handed out; the viewer's thread
uint32_t gNextLine = 0; // the record of the next line; the viewer's thread

const char *LineOrNull(int written) {
    return written >= 0 && written < static_cast<int>(sizeof gLine) ? gLine : nullptr;
}

const char *FormatSource(uint32_t index, const LightSource &source) {
    return LineOrNull(snprintf(
        gLine, sizeof gLine, "LightSourceTable[%04d] x = %.2f, y = %.2f, Diam = %.2f, Bright = %X%s",
        static_cast<int>(index), source.X + source.XQuarter * 0.25, source.Y + source.YQuarter * 0.25,
        2 * std::sqrt(source.RadiusSquared), source.Brightness, source.State == 0 ? " (D)" : ""));
}

} // namespace

const char *FormatLightSourceTableLine(bool first) {
    const LightSourceTableView table = GetLightSourceTable();
    if (first) {
        gNextLine = 0;
        return LineOrNull(
            snprintf(gLine, sizeof gLine, "NumberOfLightSources = %d\n\n", static_cast<int>(table.count)));
    }
    if (gNextLine >= table.count)
        return nullptr;
    const uint32_t index = gNextLine++;
    return FormatSource(index, table.records[index]);
}
