// A filter's scripting terminology, read from the resource's bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace host {

struct AeteParameter {
    std::string name;
    uint32_t key;
    uint32_t type;
    std::string description;
    uint16_t flags;
};

struct AeteValue {
    std::string name;
    uint32_t code;
    std::string description;
};

struct AeteEnumeration {
    uint32_t type;
    std::vector<AeteValue> values;
};

struct Aete {
    std::string suiteName;
    std::string suiteDescription;
    uint32_t suiteId = 0;
    uint16_t suiteLevel = 0;
    uint16_t suiteVersion = 0;
    std::string eventName;
    std::string eventDescription;
    uint32_t eventClass = 0;
    uint32_t eventId = 0;
    uint32_t replyType = 0;
    std::string replyDescription;
    uint16_t replyFlags = 0;
    uint32_t directType = 0;
    std::string directDescription;
    uint16_t directFlags = 0;
    std::vector<AeteParameter> parameters;
    uint16_t classCount = 0;
    uint16_t comparisonCount = 0;
    std::vector<AeteEnumeration> enumerations;
};

// False, with a reason in *why, unless the bytes are version 1.0 with one suite and one event and nothing but
// zeros after the enumerations.
bool ParseAete(const uint8_t *bytes, size_t length, Aete *aete, std::string *why);

} // namespace host
