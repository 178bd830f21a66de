#include "host/services/Descriptor.h"

#include "host/base/ByteStream.h"

#include <algorithm>

namespace host {

static DescriptorValue MakeValue(uint32_t key, uint32_t type) {
    DescriptorValue value;
    value.key = key;
    value.type = type;
    return value;
}

DescriptorValue BooleanValue(uint32_t key, bool flag) {
    DescriptorValue value = MakeValue(key, kTypeBoolean);
    value.integer = flag ? 1 : 0;
    return value;
}

DescriptorValue IntegerValue(uint32_t key, int32_t number) {
    DescriptorValue value = MakeValue(key, kTypeInteger);
    value.integer = number;
    return value;
}

DescriptorValue FloatValue(uint32_t key, double number) {
    DescriptorValue value = MakeValue(key, kTypeFloat);
    value.real = number;
    return value;
}

DescriptorValue UnitFloatValue(uint32_t key, uint32_t unit, double number) {
    DescriptorValue value = MakeValue(key, kTypeUnitFloat);
    value.unit = unit;
    value.real = number;
    return value;
}

DescriptorValue EnumeratedValue(uint32_t key, uint32_t type, uint32_t code) {
    DescriptorValue value = MakeValue(key, kTypeEnumerated);
    value.enumerationType = type;
    value.code = code;
    return value;
}

DescriptorValue DataValue(uint32_t key, const void *bytes, size_t length) {
    DescriptorValue value = MakeValue(key, kTypeRawData);
    const uint8_t *first = static_cast<const uint8_t *>(bytes);
    value.bytes.assign(first, first + length);
    return value;
}

DescriptorValue TextValue(uint32_t key, const void *characters, size_t length) {
    DescriptorValue value = DataValue(key, characters, length);
    value.type = kTypeText;
    return value;
}

const DescriptorValue *FindValue(const Descriptor &descriptor, uint32_t key) {
    const auto found = std::find_if(descriptor.values.begin(), descriptor.values.end(),
                                    [key](const DescriptorValue &value) { return value.key == key; });
    return found == descriptor.values.end() ? nullptr : &*found;
}

DescriptorValue *FindValue(Descriptor &descriptor, uint32_t key) {
    return const_cast<DescriptorValue *>(FindValue(static_cast<const Descriptor &>(descriptor), key));
}

void PutValue(Descriptor &descriptor, const DescriptorValue &value) {
    if (DescriptorValue *old = FindValue(descriptor, value.key))
        *old = value;
    else
        descriptor.values.push_back(value);
}

// The byte form: a magic word, the count, then per value its numbers in the order of the record, the length
// of its bytes and the bytes. All little-endian.
constexpr uint32_t kDescriptorMagic = 0x43534442; // "BDSC"

std::vector<uint8_t> PackDescriptor(const Descriptor &descriptor) {
    Bytes bytes;
    AppendNumber(bytes, kDescriptorMagic);
    AppendNumber(bytes, static_cast<uint32_t>(descriptor.values.size()));
    for (const DescriptorValue &value : descriptor.values) {
        for (const uint32_t word : {value.key, value.type, value.unit, value.enumerationType, value.code})
            AppendNumber(bytes, word);
        AppendNumber(bytes, value.integer);
        AppendNumber(bytes, value.real);
        AppendNumber(bytes, static_cast<uint32_t>(value.bytes.size()));
        AppendBytes(bytes, value.bytes.data(), value.bytes.size());
    }
    return bytes;
}

static DescriptorValue TakeValue(ByteReader &reader) {
    DescriptorValue value;
    for (uint32_t *word : {&value.key, &value.type, &value.unit, &value.enumerationType, &value.code})
        *word = reader.Take<uint32_t>();
    value.integer = reader.Take<int32_t>();
    value.real = reader.Take<double>();
    value.bytes = reader.TakeBytes(reader.Take<uint32_t>());
    return value;
}

bool UnpackDescriptor(const uint8_t *bytes, size_t length, Descriptor *descriptor) {
    ByteReader reader = {bytes, length};
    if (reader.Take<uint32_t>() != kDescriptorMagic)
        return false;
    const uint32_t count = reader.Take<uint32_t>();
    Descriptor unpacked;
    for (uint32_t i = 0; i < count && !reader.failed; i++)
        unpacked.values.push_back(TakeValue(reader));
    if (reader.failed)
        return false;
    *descriptor = std::move(unpacked);
    return true;
}

} // namespace host
