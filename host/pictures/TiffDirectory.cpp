#include "host/pictures/TiffDirectory.h"

#include <algorithm>

namespace host {

constexpr size_t kHeaderSize = 8;
constexpr size_t kEntrySize = 12;

static size_t TypeSize(uint16_t type) {
    switch (type) {
    case kTiffByte:
    case kTiffUndefined:
        return 1;
    case kTiffShort:
        return 2;
    case kTiffLong:
        return 4;
    case kTiffRational:
        return 8;
    default:
        return 0;
    }
}

static void TakeEntry(size_t at, TiffDirectory *directory) {
    const uint8_t *bytes = directory->bytes + at;
    TiffEntry entry = {};
    entry.tag = NumberAt<uint16_t>(bytes, directory->order);
    entry.type = NumberAt<uint16_t>(bytes + 2, directory->order);
    entry.count = NumberAt<uint32_t>(bytes + 4, directory->order);
    const uint64_t length = static_cast<uint64_t>(entry.count) * TypeSize(entry.type);
    entry.at = length > 4 ? NumberAt<uint32_t>(bytes + 8, directory->order) : at + 8;
    if (length == 0 || entry.at > directory->length || length > directory->length - entry.at)
        return;
    entry.length = static_cast<size_t>(length);
    directory->entries.push_back(entry);
}

bool ReadTiffDirectory(const uint8_t *bytes, size_t length, TiffDirectory *directory) {
    if (length < kHeaderSize || (std::memcmp(bytes, "II*\0", 4) != 0 && std::memcmp(bytes, "MM\0*", 4) != 0))
        return false;
    TiffDirectory read = {bytes, length, bytes[0] == 'I' ? ByteOrder::kLittle : ByteOrder::kBig, {}};
    const size_t at = NumberAt<uint32_t>(bytes + 4, read.order);
    if (at > length || length - at < 2)
        return false;
    const size_t count = NumberAt<uint16_t>(bytes + at, read.order);
    if (count * kEntrySize > length - at - 2)
        return false;
    for (size_t i = 0; i < count; i++)
        TakeEntry(at + 2 + i * kEntrySize, &read);
    *directory = std::move(read);
    return true;
}

static const TiffEntry *FindEntry(const TiffDirectory &directory, uint16_t tag) {
    const auto found = std::find_if(directory.entries.begin(), directory.entries.end(),
                                    [tag](const TiffEntry &entry) { return entry.tag == tag; });
    return found == directory.entries.end() ? nullptr : &*found;
}

std::vector<uint32_t> TiffNumbers(const TiffDirectory &directory, uint16_t tag) {
    std::vector<uint32_t> numbers;
    const TiffEntry *entry = FindEntry(directory, tag);
    if (!entry || (entry->type != kTiffShort && entry->type != kTiffLong))
        return numbers;
    const uint8_t *at = directory.bytes + entry->at;
    for (uint32_t i = 0; i < entry->count; i++)
        numbers.push_back(entry->type == kTiffShort
                              ? NumberAt<uint16_t>(at + size_t{i} * 2, directory.order)
                              : NumberAt<uint32_t>(at + size_t{i} * 4, directory.order));
    return numbers;
}

uint32_t TiffNumber(const TiffDirectory &directory, uint16_t tag, uint32_t whenAbsent) {
    const std::vector<uint32_t> numbers = TiffNumbers(directory, tag);
    return numbers.empty() ? whenAbsent : numbers[0];
}

Bytes TiffBytes(const TiffDirectory &directory, uint16_t tag) {
    const TiffEntry *entry = FindEntry(directory, tag);
    if (!entry || (entry->type != kTiffByte && entry->type != kTiffUndefined))
        return {};
    return {directory.bytes + entry->at, directory.bytes + entry->at + entry->length};
}

} // namespace host
