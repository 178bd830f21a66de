// A filter's plug-in property list, read from the resource's bytes: what a host needs of it to run the
// filter.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host {

struct PiplProperty {
    uint32_t vendor;
    uint32_t key;
    int32_t id;
    std::vector<uint8_t> data; // padding included
};

struct FilterCaseInfo {
    uint8_t inputHandling;
    uint8_t outputHandling;
    uint8_t flags;
    uint8_t reserved;
};
constexpr uint8_t kHandlingCannot = 0; // of inputHandling: the filter does not take the case
constexpr uint8_t kCaseNoPrefill = 1;
constexpr uint8_t kCaseWritesOutsideSelection = 8;

struct Pipl {
    std::vector<PiplProperty> properties; // in the order of the resource
    uint32_t kind = 0;
    std::string name;
    std::string category;
    uint32_t version = 0;
    std::string entryName64;
    std::optional<uint32_t> modes;         // the highest bit is mode 0
    std::string enableInfo;                // empty: none
    int32_t mostRows = 0, mostColumns = 0; // 0: not said
    bool hasFilterCases = false;
    FilterCaseInfo filterCases[7] = {};
};

// False, with a reason in *why, when the bytes are not a list that every host would take: lead word, version
// 0, lengths in bounds and multiples of 4, strings ended, kind '8BFM', a 64-bit entry, a name and a category,
// interface version at most 4.0.
bool ParsePipl(const uint8_t *bytes, size_t length, Pipl *pipl, std::string *why);

} // namespace host
