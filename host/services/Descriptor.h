// Parameters as a host's scripting system keeps them: keys with typed values. The same record serves the
// scripting descriptor, the action descriptors and the descriptor registry.
#pragma once

#include "plugin/interface/HostDescriptors.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace host {

constexpr uint32_t kTypeText = 0x54455854; // 'TEXT'

struct DescriptorValue {
    uint32_t key = 0;
    uint32_t type = 0;            // kTypeBoolean ...; with a type of no getter, every getter fails
    int32_t integer = 0;          // integer, or 0 / 1 of a boolean
    double real = 0;              // float and unit float
    uint32_t unit = 0;            // of a unit float
    uint32_t enumerationType = 0; // of an enumerated value
    uint32_t code = 0;            // of an enumerated value
    std::vector<uint8_t> bytes;   // text or raw data

    bool operator==(const DescriptorValue &) const = default;
};

struct Descriptor {
    std::vector<DescriptorValue> values; // keys are unique

    bool operator==(const Descriptor &) const = default;
};

DescriptorValue BooleanValue(uint32_t key, bool value);
DescriptorValue IntegerValue(uint32_t key, int32_t value);
DescriptorValue FloatValue(uint32_t key, double value);
DescriptorValue UnitFloatValue(uint32_t key, uint32_t unit, double value);
DescriptorValue EnumeratedValue(uint32_t key, uint32_t type, uint32_t code);
DescriptorValue DataValue(uint32_t key, const void *bytes, size_t length);
DescriptorValue TextValue(uint32_t key, const void *characters, size_t length);

// Null when the key is absent.
const DescriptorValue *FindValue(const Descriptor &descriptor, uint32_t key);
DescriptorValue *FindValue(Descriptor &descriptor, uint32_t key);
// Replaces the value of the same key, or appends.
void PutValue(Descriptor &descriptor, const DescriptorValue &value);

// The byte form in which a descriptor lies in a host handle and in the host's own file.
std::vector<uint8_t> PackDescriptor(const Descriptor &descriptor);
// False, with the output left alone, when the bytes are not a whole descriptor.
bool UnpackDescriptor(const uint8_t *bytes, size_t length, Descriptor *descriptor);

} // namespace host
