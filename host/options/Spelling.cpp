#include "host/options/Spelling.h"

#include <algorithm>
#include <numeric>

namespace host {

// Letters to change, add, take away or swap with a neighbour.
static size_t CountSlips(const std::wstring &a, const std::wstring &b) {
    std::vector<size_t> before, last, row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 1; i <= a.size(); i++) {
        before = std::move(last);
        last = row;
        row[0] = i;
        for (size_t j = 1; j <= b.size(); j++) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] != b[j - 1])});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
    }
    return row.back();
}

std::wstring NearestWord(const std::wstring &typed, const std::vector<std::wstring> &words) {
    std::wstring nearest;
    size_t fewest = std::max<size_t>(typed.size() / 4, 1) + 1;
    for (const std::wstring &word : words)
        if (const size_t slips = CountSlips(typed, word); slips < fewest) {
            fewest = slips;
            nearest = word;
        }
    return nearest;
}

} // namespace host
